// Network interfaces: kinds and dispatch, bridge member lists, attributes and
// access services, against the private server.
#include <string.h>

#include <algorithm>
#include <string>
#include <vector>

#include "harness.h"
#include "util-db-NetInterfaces-internal.h"

using namespace testbed;
using Strings = std::vector<std::string>;

namespace {

char* txt(const char* s) { return const_cast<char*>(s); }

class NetInterfacesTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        truncate({"NetInterfaces"});
        clear();
    }

    // A zeroed record named by pname (by the inline name when pname is null).
    static _db_if_info record(const char* pname, int32_t type = DB_IF_NULL) {
        _db_if_info r;
        memset(&r, 0, sizeof r);
        r.pname = txt(pname);
        r.type = type;
        return r;
    }
    static void add_row(const std::string& name, const std::string& type, const std::string& list = "NULL") {
        exec("insert into NetInterfaces (interfaceName, interfaceType, briInterfaceName) values ('" + name + "', '" +
             type + "', " + list + ")");
    }
    static Cell column(const std::string& col, const std::string& name) {
        return value("select " + col + " from NetInterfaces where interfaceName = '" + name + "'");
    }
    long count_of(const Strings& v, const std::string& text) const { return std::count(v.begin(), v.end(), text); }
};

}  // namespace

// ---- Kinds and dispatch ----

TEST_F(NetInterfacesTest, InsertDerivesTheKindFromTheNameAndWritesItBack) {
    const struct { const char* name; int32_t kind; const char* stored; } cases[] = {
        {"eth0:1", DB_IF_SUB, "SUB"}, {"eth0.100", DB_IF_VLAN, "VLAN"}, {"xeth9", DB_IF_PHY, "ETH"},
        {"br-eth1", DB_IF_PHY, "ETH"}, {"agl0", DB_IF_PHY, "ETH"}, {"lan", DB_IF_BRIDGE, "BRI"}};
    for (const auto& c : cases) {
        _db_if_info r = record(c.name);
        r.vlanId = 100;
        r.subIndex = 1;
        r.ipmask = txt("10.0.0.1/24");
        r.pifname = txt("eth0");
        EXPECT_EQ(db_if_insert(&h, &r), 0) << c.name;
        EXPECT_EQ(r.type, c.kind) << c.name;
        EXPECT_EQ(column("interfaceType", c.name), Cell(c.stored)) << c.name;
    }
    EXPECT_EQ(sent(), (Strings{
        "insert into NetInterfaces (interfaceName, interfaceType, subIndex, ipAddressMask, subEthInterfaceName) "
        "VALUES ('eth0:1', 'SUB', 1, '10.0.0.1/24', 'eth0')",
        "insert into NetInterfaces (interfaceName, interfaceType, vlanIndex) VALUES ('eth0.100', 'VLAN', 100)",
        "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('xeth9','ETH')",
        "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('br-eth1','ETH')",
        "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('agl0','ETH')",
        "insert into NetInterfaces (interfaceName, interfaceType) VALUES ('lan', 'BRI')"}));
    EXPECT_EQ(count_of(texts(7), " Begin"), 7);  // the bridge insert traces too
    EXPECT_EQ(count_of(texts(7), " End"), 7);

    clear();
    _db_if_info bad = record("eth5", DB_IF_MAX);
    EXPECT_EQ(db_if_insert(&h, &bad), -1);
    EXPECT_EQ(db_if_delete(&h, &bad), -1);
    EXPECT_EQ(records(), (Strings{"7: Begin"}));  // a failed check ends without " End"
    clear();
    bad.type = -1;
    EXPECT_EQ(db_if_insert(&h, &bad), -1);
    EXPECT_EQ(db_if_delete(&h, &bad), -1);
    EXPECT_EQ(records(), (Strings{"7: Begin", "7: End"}));
    EXPECT_TRUE(sent().empty());
}

TEST_F(NetInterfacesTest, DeleteKeepsPortsAndSetIpClassifiesInItsOwnOrder) {
    _db_if_info port = record("eth1");
    EXPECT_EQ(db_if_delete(&h, &port), 0);
    EXPECT_EQ(port.type, DB_IF_PHY);
    _db_if_info vlan = record("eth1.5");
    EXPECT_EQ(db_if_delete(&h, &vlan), 0);
    EXPECT_EQ(sent(), (Strings{"delete from NetInterfaces where interfaceName = 'eth1.5'"}));

    add_row("eth0.100", "VLAN");
    clear();
    _db_if_info r = record("eth0.100", DB_IF_VLAN);
    r.ipmask = txt("192.168.1.1/24");
    EXPECT_EQ(db_if_set_ip(&h, &r), 0);
    EXPECT_EQ(r.type, DB_IF_PHY);  // "eth" is looked for first here
    EXPECT_EQ(column("ipAddressMask", "eth0.100"), Cell("192.168.1.1/24"));
    _db_if_info bridge = record("lan", DB_IF_PHY);
    bridge.ipmask = txt("10.1.1.1/16");
    EXPECT_EQ(db_if_set_ip(&h, &bridge), 0);
    EXPECT_EQ(bridge.type, DB_IF_BRIDGE);
    EXPECT_EQ(db_if_unset_ip(&h, &r), 0);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET ipAddressMask = '192.168.1.1/24' WHERE interfaceName = "
                               "'eth0.100'",
                               "update NetInterfaces set ipAddressMask = '10.1.1.1/16' WHERE interfaceName = 'lan'",
                               "UPDATE NetInterfaces SET ipAddressMask = '' WHERE interfaceName = 'eth0.100'"}));
    EXPECT_EQ(column("ipAddressMask", "eth0.100"), Cell(""));

    clear();
    r.ipmask = nullptr;
    EXPECT_EQ(db_if_set_ip(&h, &r), -1);
    EXPECT_EQ(records(), (Strings{"7: Begin", "7:Ivalid param,ret:[-1]\n"}));
}

TEST_F(NetInterfacesTest, EffectiveNamePrefersPnameAndRefusesAnEmptyName) {
    _db_if_info r = record(nullptr);
    r.ipmask = txt("1.1.1.1/8");
    r.pifname = txt("eth1");
    r.access_ctrl = txt("ping");
    EXPECT_EQ(db_if_set_ip(&h, &r), -1);
    EXPECT_EQ(db_br_addif(&h, &r), -1);
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), -1);
    EXPECT_EQ(db_if_set_access_enable(&h, &r), -1);
    EXPECT_EQ(db_check_if_by_name(&h, &r), -1);
    EXPECT_EQ(db_check_if_by_name(&h, nullptr), -1);
    EXPECT_TRUE(sent().empty());
    EXPECT_EQ(texts(3), (Strings{"Ivalid param\n", "Ivalid param\n"}));

    clear();
    strcpy(r.name, "eth7");
    EXPECT_EQ(db_if_mtu_update(&h, &r), 0);
    r.pname = txt("eth8");
    EXPECT_EQ(db_if_mtu_update(&h, &r), 0);
    memset(r.name, 'x', sizeof r.name);  // no terminator: its 20 characters
    r.pname = nullptr;
    EXPECT_EQ(db_if_unset_ip(&h, &r), 0);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET mtu = 0 WHERE interfaceName = 'eth7'",
                               "UPDATE NetInterfaces SET mtu = 0 WHERE interfaceName = 'eth8'",
                               "UPDATE NetInterfaces SET ipAddressMask = '' WHERE interfaceName = '" +
                                   std::string(20, 'x') + "'"}));
}

TEST_F(NetInterfacesTest, LookupsCountRowsAndReadAFailedStatementAsNoMatch) {
    add_row("eth1", "ETH");
    add_row("eth1", "ETH");
    clear();
    _db_if_info r = record("eth1");
    EXPECT_EQ(db_check_if_by_name(&h, &r), 2);
    EXPECT_EQ(sent(), (Strings{"SELECT interfaceName from NetInterfaces where interfaceName = 'eth1'"}));
    EXPECT_TRUE(logged(7, "db_check_if_by_name() return: 2"));
    r.pname = txt("eth9");
    EXPECT_EQ(db_check_if_by_name(&h, &r), 0);
    r.pname = txt("it's");  // the statement cannot run
    EXPECT_EQ(db_check_if_by_name(&h, &r), 0);

    clear();
    r.pname = txt("eth1");
    r.ipmask = txt("10.0.0.1/24");
    EXPECT_EQ(db_if_check_ipmask(&h, &r), 0);
    EXPECT_EQ(sent(), (Strings{"SELECT ipAddressMask from NetInterfaces WHERE interfaceName = 'eth1' and "
                               "ipAddressMask '10.0.0.1/24'"}));
    ASSERT_EQ(texts(3).size(), 1u);
    EXPECT_EQ(texts(3)[0].rfind("Data base query faild: ", 0), 0u);
}

TEST_F(NetInterfacesTest, WorkModeRenamesEveryRowAndDeleteAllKeepsPorts) {
    for (const char* row : {"eth0:ETH", "eth1:ETH", "eth1.10:VLAN", "eth2x:SUB", "br0:BRI"}) {
        const std::string s(row);
        add_row(s.substr(0, s.find(':')), s.substr(s.find(':') + 1));
    }
    EXPECT_EQ(db_if_delete_all(&h), 0);
    EXPECT_EQ(sent(), (Strings{"delete from NetInterfaces where interfaceType != 'ETH';"}));
    EXPECT_EQ(rows("select interfaceName from NetInterfaces order by interfaceName"),
              (std::vector<Row>{{Cell("eth0")}, {Cell("eth1")}}));
    EXPECT_EQ(changeModePhyNetInterfaces(&h, "br0"), 0);
    EXPECT_EQ(sent().back(), "UPDATE NetInterfaces SET interfaceName = 'br0'");
    EXPECT_EQ(count("NetInterfaces", "interfaceName = 'br0'"), 2);
}

// ---- Bridge membership ----

TEST_F(NetInterfacesTest, MemberListAppendsAndRemovesStepByStep) {
    add_row("br0", "BRI");
    clear();
    _db_if_info r = record("br0");
    const auto add = [&](const char* m) { r.pifname = txt(m); return db_br_addif(&h, &r); };
    const auto del = [&](const char* m) { r.pifname = txt(m); return db_br_delif(&h, &r); };
    const auto list = [&] { return column("briInterfaceName", "br0"); };

    EXPECT_EQ(add("eth1"), 0);
    EXPECT_EQ(sent(), (Strings{"SELECT interfaceName from NetInterfaces WHERE interfaceName = 'br0'",
                               "SELECT briInterfaceName from NetInterfaces WHERE interfaceName = 'br0'",
                               "UPDATE NetInterfaces SET briInterfaceName = 'eth1' WHERE interfaceName = 'br0'"}));
    const struct { bool append; const char* member; const char* stored; } steps[] = {
        {true, "eth2", "eth1;eth2"}, {true, "eth3", "eth1;eth2;eth3"}, {true, "eth2", "eth1;eth2;eth3;eth2"},
        {false, "eth3", "eth1;eth2;eth2"}, {false, "eth2", "eth1;eth2"}, {false, "eth2", "eth1"}};
    for (const auto& s : steps) {
        EXPECT_EQ(s.append ? add(s.member) : del(s.member), 0) << s.stored;
        EXPECT_EQ(list(), Cell(s.stored));
    }
    exec("update NetInterfaces set briInterfaceName = 'eth1;eth2;eth3' where interfaceName = 'br0'");
    const char* const front[][2] = {{"eth1", ";eth2;eth3"}, {"eth2", ";eth3"}, {"eth3", ""}};
    for (const auto& f : front) {
        EXPECT_EQ(del(f[0]), 0);
        EXPECT_EQ(list(), Cell(f[1])) << f[0];
    }
    EXPECT_EQ(add("eth4"), 0);  // an empty stored list gives a leading separator
    EXPECT_EQ(list(), Cell(";eth4"));
    exec("update NetInterfaces set briInterfaceName = 'eth10;eth1' where interfaceName = 'br0'");
    EXPECT_EQ(del("eth1"), 0);  // the substring inside eth10 is hit first
    EXPECT_EQ(list(), Cell(";eth1"));
}

TEST_F(NetInterfacesTest, MemberListEdgesLeaveTheStoredListAlone) {
    add_row("br0", "BRI");
    clear();
    EXPECT_EQ(deleteInterfaceBridgeNetInterfaces(&h, "br0", "eth1"), 0);  // absent list
    EXPECT_EQ(sent().size(), 2u);                                          // probe and read, no write
    EXPECT_EQ(count("NetInterfaces", "briInterfaceName is null"), 1);
    exec("update NetInterfaces set briInterfaceName = 'eth2;eth3' where interfaceName = 'br0'");
    EXPECT_EQ(deleteInterfaceBridgeNetInterfaces(&h, "br0", "eth1"), 0);  // not a member
    EXPECT_EQ(sent().size(), 4u);

    // 1023 characters fit; one more is refused and nothing is written.
    const std::string stored(1018, 'a');
    exec("update NetInterfaces set briInterfaceName = '" + stored + "' where interfaceName = 'br0'");
    clear();
    EXPECT_EQ(addInterfaceBridgeNetInterfaces(&h, "br0", "eth10"), -1);
    EXPECT_EQ(sent().size(), 2u);
    EXPECT_EQ(addInterfaceBridgeNetInterfaces(&h, "br0", "eth1"), 0);
    EXPECT_EQ(column("briInterfaceName", "br0"), Cell(stored + ";eth1"));

    clear();
    EXPECT_EQ(addInterfaceBridgeNetInterfaces(&h, "br9", "eth1"), 0);  // no such bridge: an empty write
    EXPECT_EQ(sent().back(), "UPDATE NetInterfaces SET briInterfaceName = '' WHERE interfaceName = 'br9'");
    clear();
    fail_fetch_at(1);
    EXPECT_EQ(deleteInterfaceBridgeNetInterfaces(&h, "br0", "eth1"), -1);
    EXPECT_EQ(texts(3), (Strings{"mysql_fetch_row() exec error!"}));
    _db_if_info r = record("br0");
    EXPECT_EQ(db_br_addif(&h, &r), -1);  // no member name
    EXPECT_EQ(sent().size(), 2u);
}

TEST_F(NetInterfacesTest, MembershipQueryAnswersAndCopiesTheList) {
    add_row("br0", "BRI", "'eth10'");
    clear();
    _db_if_info r = record("br0");
    strcpy(r.ifname_get, "untouched");
    r.pifname = txt("eth2");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), 0);
    EXPECT_STREQ(r.ifname_get, "untouched");
    r.pifname = txt("eth1");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), 1);
    EXPECT_STREQ(r.ifname_get, "eth10");
    EXPECT_EQ(sent().back(), "SELECT interfaceName,briInterfaceName from NetInterfaces WHERE interfaceName = 'br0'");
    EXPECT_TRUE(texts(3).empty());

    r.pname = txt("br7");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), -1);
    EXPECT_EQ(texts(3), (Strings{"mysql_fetch_row() exec error!"}));
    add_row("br7", "BRI", "'eth1'");
    add_row("br7", "BRI", "'eth1'");
    clear();
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), -1);
    EXPECT_EQ(texts(3), (Strings{"mysql_num_rows(), data is empty or error!"}));

    // A list of exactly 1024 characters fills the field without a terminator.
    const std::string full = "eth1;" + std::string(1019, 'z');
    add_row("br8", "BRI", "'" + full + "'");
    r.pname = txt("br8");
    EXPECT_EQ(get_Bridge_info_iface(&h, &r), 1);
    EXPECT_EQ(std::string(r.ifname_get, sizeof r.ifname_get), full);

    clear();
    EXPECT_EQ(updateBridgeModeNetInterfaces(&h, "br8", 1), 0);
    EXPECT_EQ(updateBridgeModeNetInterfaces(&h, nullptr, 1), -1);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET status = 1 WHERE interfaceName = 'br8'"}));
    EXPECT_EQ(column("status", "br8"), Cell("1"));
}

// ---- Attributes and access services ----

TEST_F(NetInterfacesTest, AccessServicesWriteTheirColumn) {
    using Setter = int (*)(db_handle_t*, int, const char*);
    const struct { const char* column; Setter setters[4]; } services[] = {
        {"https", {sethttpsPhyInterfaceNetInterfaces, sethttpsVlanInterfaceNetInterfaces,
                   sethttpsSubInterfaceNetInterfaces, sethttpsBridgeNetInterfaces}},
        {"snmp", {setsnmpPhyInterfaceNetInterfaces, setsnmpVlanInterfaceNetInterfaces,
                  setsnmpSubInterfaceNetInterfaces, setsnmpBridgeNetInterfaces}},
        {"ping", {setpingPhyInterfaceNetInterfaces, setpingVlanInterfaceNetInterfaces,
                  setpingSubInterfaceNetInterfaces, setpingBridgeNetInterfaces}}};
    add_row("eth2", "ETH");
    for (const auto& s : services) {
        for (int k = 0; k < 4; ++k) {
            clear();
            EXPECT_EQ(s.setters[k](&h, k + 1, "eth2"), 0) << s.column << k;
            EXPECT_EQ(s.setters[k](&h, 1, nullptr), -1);
            EXPECT_EQ(sent(), (Strings{std::string("UPDATE NetInterfaces SET ") + s.column + " = " +
                                       std::to_string(k + 1) + " WHERE interfaceName = 'eth2'"}));
            EXPECT_EQ(column(s.column, "eth2"), Cell(std::to_string(k + 1)));
        }
    }
    clear();
    _db_if_info r = record("eth2");
    r.access_ctrl = txt("snmp");
    EXPECT_EQ(db_if_set_access_enable(&h, &r), 0);
    EXPECT_EQ(db_if_set_access_disable(&h, &r), 0);
    r.access_ctrl = nullptr;
    EXPECT_EQ(db_if_set_access_enable(&h, &r), -1);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET snmp = 1 WHERE interfaceName = 'eth2'",
                               "UPDATE NetInterfaces SET snmp = 0 WHERE interfaceName = 'eth2'"}));
}

TEST_F(NetInterfacesTest, RecordEntryPointsWriteTheirColumns) {
    for (const char* name : {"eth1", "eth10", "eth1.100", "eth2"}) {
        add_row(name, "ETH");
    }
    clear();
    _db_if_info r = record("eth1");
    r.confer = 1;
    EXPECT_EQ(db_if_negmode_update(&h, &r), 0);  // speed 0: confer alone
    r.speed = 1000;
    EXPECT_EQ(db_if_negmode_update(&h, &r), 0);
    r.dhcp_mode = 2;
    EXPECT_EQ(db_if_set_dhcpmode(&h, &r), 0);
    r.mac = txt("00:0c:29:aa:bb:cc");
    EXPECT_EQ(db_if_mac_update(&h, &r), 0);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET confer = 1 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET confer = 1 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET speed = 1000 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET ipType = 2 WHERE interfaceName = 'eth1'",
                               "UPDATE NetInterfaces SET mac = '00:0c:29:aa:bb:cc' WHERE interfaceName = 'eth1'"}));
    EXPECT_EQ(column("concat_ws(',', confer, speed, ipType, mac)", "eth1"), Cell("1,1000,2,00:0c:29:aa:bb:cc"));
    clear();
    r.pname = txt("eth'1");  // confer fails: speed is not sent
    EXPECT_EQ(db_if_negmode_update(&h, &r), -1);
    EXPECT_EQ(sent().size(), 1u);

    clear();
    r.pname = txt("eth1");
    r.status = 1;
    EXPECT_EQ(db_if_refresh(&h, &r), 0);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET status = 1 WHERE interfaceName like '%eth1%'"}));
    EXPECT_EQ(count("NetInterfaces", "status = 1"), 3);  // eth1, eth10, eth1.100
    clear();
    r.ipmask = txt("172.16.0.1/12");
    r.status = 0;
    EXPECT_EQ(db_if_stat_update(&h, &r), 0);  // the address, not the status
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET ipAddressMask = '172.16.0.1/12' WHERE interfaceName = 'eth1'"}));
    EXPECT_EQ(count("NetInterfaces", "status = 1"), 3);

    clear();
    EXPECT_EQ(setVlanNameInterfaceNetInterfaces(&h, "eth1.100", "eth1"), 0);
    EXPECT_EQ(setVlanNameInterfaceNetInterfaces(&h, "eth1.100", nullptr), -1);
    EXPECT_EQ(sent(), (Strings{"UPDATE NetInterfaces SET vlanEthInterfaceName  = 'eth1' WHERE interfaceName = "
                               "'eth1.100'"}));
}

TEST_F(NetInterfacesTest, ConnectionStatusReadsTheStoredValue) {
    add_row("eth1", "ETH");
    exec("update NetInterfaces set status = 1 where interfaceName = 'eth1'");
    add_row("eth3", "ETH");  // status absent
    clear();
    EXPECT_EQ(get_interface_connnection_status(&h, "eth1"), 1);
    EXPECT_EQ(sent(), (Strings{"SELECT status from NetInterfaces where interfaceName = 'eth1'"}));
    EXPECT_TRUE(logged(7, "The interface connnection status is :1\t\n"));
    EXPECT_EQ(get_interface_connnection_status(&h, "eth3"), -1);
    EXPECT_TRUE(texts(3).empty());
    EXPECT_EQ(get_interface_connnection_status(&h, "eth9"), -1);
    EXPECT_EQ(texts(3), (Strings{"mysql_num_rows(), data is empty or error!"}));
    clear();
    fail_fetch_at(1);
    EXPECT_EQ(get_interface_connnection_status(&h, "eth1"), -1);
    EXPECT_EQ(texts(3), (Strings{"mysql_fetch_row() exec error!"}));

    clear();  // debug records carry this module's source path
    _db_if_info r = record("br1");
    EXPECT_EQ(db_if_insert(&h, &r), 0);
    std::string file;
    strip_site(logs().front().text, &file);
    EXPECT_EQ(file, "db_tables/util-db-NetInterfaces.cpp");
}
