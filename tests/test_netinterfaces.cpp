// Network interfaces: kinds and dispatch, bridge member lists, attributes and
// access services, against the private server.
#include <string.h>

#include "harness.h"
#include "util-db-NetInterfaces-internal.h"

using namespace testbed;
using Strings = std::vector<std::string>;
using Ints = std::vector<int>;

namespace {

char* txt(const char* s) { return const_cast<char*>(s); }

struct NetInterfacesTest : LibraryTest {  // each test starts with an empty table
    void SetUp() override { LibraryTest::SetUp(), truncate({"NetInterfaces"}); }
};

// A zeroed record named by pname (by the inline name when pname is null).
_db_if_info record(const char* pname, int32_t type = DB_IF_NULL, const char* ipmask = nullptr,
                   const char* pifname = nullptr) {
    _db_if_info r{};
    r.pname = txt(pname), r.type = type, r.ipmask = txt(ipmask), r.pifname = txt(pifname);
    return r;
}

// Rows given as "name:TYPE", all with the member list `list`.
void add_rows(const Strings& rows, const std::string& list = "NULL") {
    for (const std::string& r : rows) {
        exec("insert into NetInterfaces (interfaceName, interfaceType, briInterfaceName) values ('" +
             r.substr(0, r.rfind(':')) + "', '" + r.substr(r.rfind(':') + 1) + "', " + list + ")");
    }
}

}  // namespace

// ---- Kinds and dispatch ----

TEST_F(NetInterfacesTest, KindsDispatchAndEffectiveNames) {
    const struct { const char* name; int32_t kind; } cases[] = {{"eth0:1", DB_IF_SUB}, {"eth0.100", DB_IF_VLAN},
        {"xeth9", DB_IF_PHY}, {"br-eth1", DB_IF_PHY}, {"agl0", DB_IF_PHY}, {"lan", DB_IF_BRIDGE}};
    for (const auto& c : cases) {
        _db_if_info r = record(c.name, DB_IF_NULL, "10.0.0.1/24", "eth0");
        r.vlanId = 100, r.subIndex = 1;
        EXPECT_EQ((Ints{db_if_insert(&h, &r), r.type}), (Ints{0, c.kind})) << c.name;
    }
    EXPECT_EQ(sent(), (Strings{
        "insert into NetInterfaces (interfaceName, interfaceType, subIndex, ipAddressMask, subEthInterfaceName) "
        "VALUES ('eth0:1', 'SUB', 1, '10.0.0.1/24', 'eth0')",
        "insert into NetInterfaces (interfaceName, interfaceType, vlanIndex) VALUES ('eth0.100', 'VLAN', 100)",
        "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('xeth9','ETH')",
        "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('br-eth1','ETH')",
        "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('agl0','ETH')",
        "insert into NetInterfaces (interfaceName, interfaceType) VALUES ('lan', 'BRI')"}));
    for (const int type : {int(DB_IF_MAX), -1}) {  // a failed check ends without " End"
        clear();
        _db_if_info bad = record("eth5", type);
        EXPECT_EQ((Ints{db_if_insert(&h, &bad), db_if_delete(&h, &bad)}), (Ints{-1, -1}));
        EXPECT_EQ(records(), type < 0 ? (Strings{"7: Begin", "7: End"}) : (Strings{"7: Begin"}));
        EXPECT_TRUE(sent().empty());
    }

    // Delete keeps ports; the address setter looks for "eth" first.
    clear();
    _db_if_info port = record("eth1"), vlan = record("eth1.5"), r = record("eth0.100", DB_IF_VLAN, "192.168.1.1/24");
    _db_if_info bridge = record("lan", DB_IF_PHY, "10.1.1.1/16");
    EXPECT_EQ((Ints{db_if_delete(&h, &port), port.type, db_if_delete(&h, &vlan), db_if_set_ip(&h, &r), r.type,
                    db_if_set_ip(&h, &bridge), bridge.type, db_if_unset_ip(&h, &r)}),
              (Ints{0, DB_IF_PHY, 0, 0, DB_IF_PHY, 0, DB_IF_BRIDGE, 0}));
    EXPECT_EQ(sent(), (Strings{"delete from NetInterfaces where interfaceName = 'eth1.5'",
                               "UPDATE NetInterfaces SET ipAddressMask = '192.168.1.1/24' WHERE interfaceName = "
                               "'eth0.100'",
                               "update NetInterfaces set ipAddressMask = '10.1.1.1/16' WHERE interfaceName = 'lan'",
                               "UPDATE NetInterfaces SET ipAddressMask = '' WHERE interfaceName = 'eth0.100'"}));
    clear();
    r.ipmask = nullptr;
    EXPECT_EQ(db_if_set_ip(&h, &r), -1);
    EXPECT_EQ(records(), (Strings{"7: Begin", "7:Ivalid param,ret:[-1]\n"}));

    // No effective name: neither pname nor the inline name (capture cleared above).
    r = record(nullptr, DB_IF_NULL, "1.1.1.1/8", "eth1");
    r.access_ctrl = txt("ping");
    EXPECT_EQ((Ints{db_if_set_ip(&h, &r), db_br_addif(&h, &r), get_Bridge_info_iface(&h, &r),
                    db_if_set_access_enable(&h, &r), db_check_if_by_name(&h, &r), db_check_if_by_name(&h, nullptr)}),
              Ints(6, -1));
    EXPECT_TRUE(sent().empty());
    EXPECT_EQ(texts(3), (Strings{"Ivalid param\n", "Ivalid param\n"}));
    strcpy(r.name, "eth7");
    _db_if_info both = r, unterminated = r;
    both.pname = txt("eth8");                                  // wins over the inline name
    memset(unterminated.name, 'x', sizeof unterminated.name);  // no terminator: its 20 characters
    EXPECT_EQ((Ints{db_if_mtu_update(&h, &r), db_if_mtu_update(&h, &both), db_if_unset_ip(&h, &unterminated)}),
              Ints(3, 0));
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET mtu = 0 WHERE interfaceName = 'eth7'",
                               "UPDATE NetInterfaces SET mtu = 0 WHERE interfaceName = 'eth8'",
                               "UPDATE NetInterfaces SET ipAddressMask = '' WHERE interfaceName = '" +
                                   std::string(20, 'x') + "'"}));

    add_rows({"eth0:ETH", "eth1:ETH", "eth1:ETH", "eth1.10:VLAN", "eth2x:SUB", "br0:BRI"});
    clear();
    _db_if_info eth1 = record("eth1", DB_IF_NULL, "10.0.0.1/24"), eth9 = record("eth9");
    // A failed statement (the address check's) reads as no match.
    EXPECT_EQ((Ints{db_check_if_by_name(&h, &eth1), db_check_if_by_name(&h, &eth9), db_if_check_ipmask(&h, &eth1)}),
              (Ints{2, 0, 0}));
    EXPECT_EQ(sent().front(), "SELECT interfaceName from NetInterfaces where interfaceName = 'eth1'");
    EXPECT_EQ(sent().back(), "SELECT ipAddressMask from NetInterfaces WHERE interfaceName = 'eth1' and "
                             "ipAddressMask '10.0.0.1/24'");
    EXPECT_TRUE(logged(7, "db_check_if_by_name() return: 2"));

    clear();  // deleting all keeps the ports
    EXPECT_EQ((Ints{db_if_delete_all(&h), changeModePhyNetInterfaces(&h, "br0")}), (Ints{0, 0}));
    EXPECT_EQ(sent(), (Strings{"delete from NetInterfaces where interfaceType != 'ETH';",
                               "UPDATE NetInterfaces SET interfaceName = 'br0'"}));
}

// ---- Bridge membership ----

TEST_F(NetInterfacesTest, MemberListAppendsRemovesAndAnswersQueries) {
    add_rows({"br0:BRI"});
    _db_if_info r = record("br0", DB_IF_NULL, nullptr, "eth1");
    EXPECT_EQ(db_br_addif(&h, &r), 0);
    EXPECT_EQ(sent(), (Strings{"SELECT interfaceName from NetInterfaces WHERE interfaceName = 'br0'",
                               "SELECT briInterfaceName from NetInterfaces WHERE interfaceName = 'br0'",
                               "UPDATE NetInterfaces SET briInterfaceName = 'eth1' WHERE interfaceName = 'br0'"}));
    // The list stored first (if any), add or remove, the member, the result, the statements sent (probe
    // and read: no write), the list after.
    const std::string long_list(1018, 'a');
    const struct { std::string preset; bool append; const char* member; int ret; int sent; Cell stored; } steps[] = {
        {"", true, "eth2", 0, 3, "eth1;eth2"}, {"", true, "eth3", 0, 3, "eth1;eth2;eth3"},
        {"", true, "eth2", 0, 3, "eth1;eth2;eth3;eth2"}, {"", false, "eth3", 0, 3, "eth1;eth2;eth2"},
        {"eth1;eth2;eth3", false, "eth1", 0, 3, ";eth2;eth3"}, {"", false, "eth2", 0, 3, ";eth3"},
        {"", false, "eth3", 0, 3, ""}, {"", true, "eth4", 0, 3, ";eth4"},  // empty list: a leading separator
        {"eth10;eth1", false, "eth1", 0, 3, ";eth1"},                       // the substring inside eth10 is hit first
        {"eth2;eth3", false, "eth1", 0, 2, "eth2;eth3"},                    // not a member
        {long_list, true, "eth10", -1, 2, long_list},  // 1023 characters fit; one more is refused
        {"", true, "eth1", 0, 3, long_list + ";eth1"}};
    for (const auto& s : steps) {
        clear();
        if (!s.preset.empty()) exec("update NetInterfaces set briInterfaceName = '" + s.preset + "'");
        r.pifname = txt(s.member);
        const int ret = s.append ? db_br_addif(&h, &r) : db_br_delif(&h, &r);
        EXPECT_EQ((Ints{ret, int(sent().size())}), (Ints{s.ret, s.sent})) << s.preset << s.member;
        EXPECT_EQ(value("select briInterfaceName from NetInterfaces"), s.stored);
    }

    // A failed fetch; an absent list (no write); no such bridge (an empty write).
    exec("update NetInterfaces set briInterfaceName = NULL");
    clear();
    fail_fetch_at(1);
    EXPECT_EQ((Ints{deleteInterfaceBridgeNetInterfaces(&h, "br0", "eth1"),
                    deleteInterfaceBridgeNetInterfaces(&h, "br0", "eth1"),
                    addInterfaceBridgeNetInterfaces(&h, "br9", "eth1")}),
              (Ints{-1, 0, 0}));
    EXPECT_EQ(texts(3), (Strings{"mysql_fetch_row() exec error!"}));
    EXPECT_EQ(sent().size(), 7u);
    EXPECT_EQ(sent().back(), "UPDATE NetInterfaces SET briInterfaceName = '' WHERE interfaceName = 'br9'");

    // The membership query: a member of the list, or not.
    exec("update NetInterfaces set briInterfaceName = 'eth10'");
    clear();
    r.pifname = txt("eth2");
    strcpy(r.ifname_get, "untouched");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), 0);
    EXPECT_STREQ(r.ifname_get, "untouched");
    r.pifname = txt("eth1");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), 1);
    EXPECT_STREQ(r.ifname_get, "eth10");
    EXPECT_EQ(sent().back(), "SELECT interfaceName,briInterfaceName from NetInterfaces WHERE interfaceName = 'br0'");

    r.pname = txt("br7");  // no row, then two rows
    const int none = get_Bridge_info_iface(&h, &r);
    add_rows({"br7:BRI", "br7:BRI"}, "'eth1'");
    EXPECT_EQ((Ints{none, get_Bridge_info_iface(&h, &r)}), (Ints{-1, -1}));
    EXPECT_EQ(texts(3), (Strings{"mysql_fetch_row() exec error!", "mysql_num_rows(), data is empty or error!"}));

    // A list of exactly 1024 characters fills the field without a terminator.
    const std::string full = "eth1;" + std::string(1019, 'z');
    add_rows({"br8:BRI"}, "'" + full + "'");
    r.pname = txt("br8");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), 1);
    EXPECT_EQ(std::string(r.ifname_get, sizeof r.ifname_get), full);
}

// ---- Attributes, access services and link status ----

TEST_F(NetInterfacesTest, AttributesAccessServicesAndStatusUseTheirColumns) {
    add_rows({"eth1:ETH", "eth10:ETH", "eth1.100:ETH", "eth2:ETH"});
    // The address record sets the address, not the status.
    _db_if_info a = record("eth2"), r = record("eth1"), address = record("eth1", DB_IF_NULL, "172.16.0.1/12");
    a.access_ctrl = txt("snmp"), r.confer = 1;
    EXPECT_EQ(db_if_negmode_update(&h, &r), 0);  // speed 0: confer alone
    r.speed = 1000, r.dhcp_mode = 2, r.mac = txt("00:0c:29:aa:bb:cc"), r.status = 1;
    // The twelve access-service setters are built alike, one per service and
    // interface kind: each service's statement, each kind once.
    EXPECT_EQ((Ints{sethttpsPhyInterfaceNetInterfaces(&h, 2, "eth2"), setsnmpVlanInterfaceNetInterfaces(&h, 2, "eth2"),
                    setpingSubInterfaceNetInterfaces(&h, 2, "eth2"), sethttpsBridgeNetInterfaces(&h, 1, nullptr),
                    db_if_negmode_update(&h, &r), db_if_set_dhcpmode(&h, &r), db_if_mac_update(&h, &r),
                    db_if_refresh(&h, &r), db_if_stat_update(&h, &address), db_if_set_access_enable(&h, &a),
                    db_if_set_access_disable(&h, &a), setVlanNameInterfaceNetInterfaces(&h, "eth1.100", "eth1"),
                    updateBridgeModeNetInterfaces(&h, "eth10", 1)}),
              (Ints{0, 0, 0, -1, 0, 0, 0, 0, 0, 0, 0, 0, 0}));
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET confer = 1 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET https = 2 WHERE interfaceName = 'eth2'",
                               "UPDATE NetInterfaces SET snmp = 2 WHERE interfaceName = 'eth2'",
                               "UPDATE NetInterfaces SET ping = 2 WHERE interfaceName = 'eth2'",
                               "UPDATE NetInterfaces SET confer = 1 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET speed = 1000 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET ipType = 2 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET mac = '00:0c:29:aa:bb:cc' WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET status = 1 WHERE interfaceName like '%eth1%'",
                               "UPDATE NetInterfaces SET ipAddressMask = '172.16.0.1/12' WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET snmp = 1 WHERE interfaceName = 'eth2'",
                               "UPDATE NetInterfaces SET snmp = 0 WHERE interfaceName = 'eth2'",
                               "UPDATE NetInterfaces SET vlanEthInterfaceName  = 'eth1' WHERE interfaceName = "
                               "'eth1.100'",
                               "UPDATE NetInterfaces SET status = 1 WHERE interfaceName = 'eth10'"}));

    // The stored status: a failed fetch, 1 for eth1, absent for eth2 (no error), no row for eth9.
    clear();
    fail_fetch_at(1);
    const auto status = [&](const char* name) { return get_interface_connnection_status(&h, name); };
    EXPECT_EQ((Ints{status("eth1"), status("eth1"), status("eth2"), status("eth9")}), (Ints{-1, 1, -1, -1}));
    EXPECT_EQ(sent().front(), "SELECT status from NetInterfaces where interfaceName = 'eth1'");
    EXPECT_TRUE(logged(7, "The interface connnection status is :1\t\n"));
    EXPECT_EQ(texts(3), (Strings{"mysql_fetch_row() exec error!", "mysql_num_rows(), data is empty or error!"}));
}
