// Security zones, their member interfaces, the zone look-ups, address pools and
// assets by name, against the private server.
#include <string.h>

#include "harness.h"

using namespace testbed;
using Texts = std::vector<std::string>;
using Ints = std::vector<int>;

namespace {

const char* const kMembers1 = "select interfaceName from SecurityAreaInterfaces where securityAreaId= 1;";
const char* const kAreasFile = "db_tables/util-db-SecurityAreas.cpp";
const char* const kPoolsFile = "db_tables/util-db-addresspools.cpp";

std::string zone_lookup(const std::string& name) {
    return "select securityAreaId from SecurityAreas where name= '" + name + "';";
}

// Moves a table out of the way so that statements on it fail; puts it back.
struct TableAside {
    std::string table;
    explicit TableAside(std::string t) : table(std::move(t)) { exec("rename table " + table + " to " + table + "Aside"); }
    ~TableAside() { exec("rename table " + table + "Aside to " + table); }
};

class ZonesTest : public LibraryTest {
protected:
    void SetUp() override {
        truncate({"SecurityAreas", "SecurityAreaInterfaces", "AddressPools", "Assets"});
        LibraryTest::SetUp();
    }

    // The statements sent since the last clear; clears the capture.
    Texts take() {
        const Texts s = sent();
        clear();
        return s;
    }

    // Debug texts of the table modules (not the core's); with a file given,
    // each must come from that file.
    Texts traces(const char* file = nullptr) const {
        Texts out;
        for (const LogRecord& r : logs()) {
            std::string site;
            const std::string text = strip_site(r.text, &site);
            if (r.priority != 7 || site.rfind("db_tables/", 0) != 0) continue;
            EXPECT_EQ(site, file ? file : site) << text;
            out.push_back(text);
        }
        return out;
    }

    // Each {len, text}: call(buf, len) succeeds and leaves exactly text in a
    // buffer of len bytes, touching no byte past them. Captures the last call.
    template <class Call>
    void expect_cuts(Call call, std::initializer_list<std::pair<int, const char*>> cuts) {
        for (const auto& [len, text] : cuts) {
            clear();
            char buf[48];
            memset(buf, 'X', sizeof buf);
            buf[0] = '\0';
            EXPECT_TRUE(call(buf, len)) << len;
            EXPECT_STREQ(buf, text) << len;
            EXPECT_EQ(std::string(buf + len, sizeof buf - len), std::string(sizeof buf - len, 'X')) << len;
        }
    }
};

}  // namespace

// ---- Zones and members ----

TEST_F(ZonesTest, ZonesAndTheirMembers) {
    // The dumps: one debug record per line and cell, from this module.
    EXPECT_EQ((Ints{util_db_query_commonSecurityAreas(&h), util_db_query_commonSecurityAreaInterfaces(&h)}),
              Ints(2, 0));
    const Texts none = {"The total rows is: 0\n", "The total fields is: 3\n"};
    EXPECT_EQ(traces(kAreasFile), (Texts{none[0], none[1], none[0], none[1]}));
    EXPECT_EQ(take(), (Texts{"select * from SecurityAreas", "select * from SecurityAreaInterfaces"}));
    EXPECT_EQ((Ints{insertSecurityAreas(&h, (char*)"trust"), insertSecurityAreas(&h, (char*)"trust"),
                    updateSecurityAreas(&h, (char*)"trust", 7)}), (Ints{0, -1, 0}));  // the second: an existing name
    const std::string update = "UPDATE SecurityAreas SET enable = 7 WHERE name = 'trust';";  // enable as given
    EXPECT_EQ(traces(), (Texts{"mysql cmd: " + zone_lookup("trust") + "\n", "mysql cmd: " + zone_lookup("trust") + "\n",
                               "mysql cmd: " + update + "\n"}));
    EXPECT_EQ(texts(3), (Texts{"mysql_num_rows():data is exist,please check the para that you input!\n"}));
    EXPECT_EQ(take(), (Texts{zone_lookup("trust"), "insert into SecurityAreas (name) VALUES('trust');",
                             zone_lookup("trust"), update}));

    // Members are added one at a time (no duplicate check) and cleared together.
    exec("insert into SecurityAreas (name) values ('dmz')");
    EXPECT_EQ((Ints{insertMainFrame(&h, (char*)"dmz", (char*)"eth1"), insertMainFrame(&h, (char*)"dmz", (char*)"eth1"),
                    deleteMainFrame(&h, (char*)"dmz"), deleteMainFrame(&h, (char*)"trust")}), Ints(4, 0));
    EXPECT_EQ(traces(kAreasFile), (Texts{"2\t\n", "1\t\n"}));  // the deletes' zone ids
    const std::string add = "insert into SecurityAreaInterfaces(securityAreaId,interfaceName) VALUES(2,'eth1');";
    EXPECT_EQ(take(), (Texts{zone_lookup("dmz"), add, zone_lookup("dmz"), add, zone_lookup("dmz"),
                             "delete from SecurityAreaInterfaces where securityAreaId = 2;", zone_lookup("trust"),
                             "delete from SecurityAreaInterfaces where securityAreaId = 1;"}));
    EXPECT_EQ((Ints{insertMainFrame(&h, (char*)"nowhere", (char*)"eth0"), deleteMainFrame(&h, (char*)"nowhere")}),
              Ints(2, -1));
    EXPECT_EQ(texts(3), (Texts(2, "mysql_num_rows(), data is empty or error!")));
    EXPECT_EQ(take().size(), 2u);

    // Deleting a zone removes its members first, then the zone.
    EXPECT_EQ(deleteSecurityAreas(&h, (char*)"trust"), 0);
    EXPECT_EQ(texts(3), (Texts{"1\t\n"}));  // the id trace at the error priority
    EXPECT_EQ(take(), (Texts{zone_lookup("trust"), "delete from SecurityAreaInterfaces where securityAreaId = 1;",
                             "delete from SecurityAreas where name = 'trust';"}));
    fail_fetch_at(1);  // the second call's: the first finds no row
    EXPECT_EQ((Ints{deleteSecurityAreas(&h, (char*)"trust"), deleteSecurityAreas(&h, (char*)"dmz")}), Ints(2, -1));
    EXPECT_EQ(texts(3), (Texts{"mysql_num_rows(), data is empty or error!\n", "mysql_fetch_row() exec error!\n"}));
    EXPECT_EQ(take().size(), 2u);
    TableAside aside("SecurityAreaInterfaces");
    EXPECT_EQ(deleteSecurityAreas(&h, (char*)"dmz"), -1);
    EXPECT_EQ(sent().size(), 2u);  // the zone row is not touched
}

// ---- Look-ups into a caller's buffer ----

// The zone of an interface, the interface and address of a pool, the zone and
// address of an asset: each copies the first row's value, or gives NULL and
// leaves the buffer as it was; the messages carry the failing step's number.
TEST_F(ZonesTest, LookupsCopyTheFirstRowOrLeaveTheBuffer) {
    exec("insert into SecurityAreas (name) values ('trust'), ('dmz')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (2,'eth2'), (7,'eth7')");
    exec("insert into AddressPools (name, interfaceName, ipAddress, type) values ('lan','eth0','10.0.0.0/24',3),"
         "('lan','eth9','10.9.0.0/24',4), ('bare','eth5',NULL,-1)");
    exec("insert into Assets (name, ipAddress, securityAreaName) values ('pc1','192.168.1.5','trust'),"
         "('pc1','192.168.1.6','dmz'), ('bare','192.168.1.9',NULL)");
    // The look-up, its name, the value copied (nullptr: NULL returned), the
    // text logged at 3 (nullptr: none) and the fetch made to fail (0: none).
    const struct {
        char* (*lookup)(db_handle_t*, char*, char*);
        const char *name, *copied, *error;
        int fail_fetch;
    } cases[] = {
        {select_name_by_interfacename_SA, "eth9", nullptr, "03:mysql_num_rows(), data is empty or error!", 0},
        {select_name_by_interfacename_SA, "eth2", nullptr, "04:mysql_fetch_row() exec error!", 1},
        {select_name_by_interfacename_SA, "eth7", nullptr, "07:mysql_num_rows(), data is empty or error!", 0},
        {select_name_by_interfacename_SA, "eth2", nullptr, "08:mysql_fetch_row() exec error!", 2},
        {select_ipAddress_by_name_ipAdd, "bare", nullptr, "04:mysql_fetch_row() exec error!\n", 0},  // a NULL value
        {select_interface_by_name_AddPools, "nowhere", nullptr, "03:mysql_num_rows(), data is empty or error!\n", 0},
        {selectSAnameByAssetname, "nowhere", nullptr, "03:mysql_num_rows(), data is empty or error!", 0},
        {selectipAddressByAssetname, "pc1", nullptr, "04:mysql_fetch_row() exec error!", 1},
        {selectSAnameByAssetname, "bare", nullptr, nullptr, 0},  // a zone that is not set
        {select_name_by_interfacename_SA, "eth2", "dmz", nullptr, 0},
        {select_interface_by_name_AddPools, "lan", "eth0", nullptr, 0},
        {select_ipAddress_by_name_ipAdd, "lan", "10.0.0.0/24", nullptr, 0},
        {selectSAnameByAssetname, "pc1", "trust", nullptr, 0},
        {selectipAddressByAssetname, "pc1", "192.168.1.5", nullptr, 0},
    };
    for (const auto& c : cases) {
        char buf[32] = "old";
        fail_fetch_at(c.fail_fetch);
        EXPECT_EQ(c.lookup(&h, (char*)c.name, buf), c.copied ? buf : nullptr) << c.name;
        EXPECT_STREQ(buf, c.copied ? c.copied : "old") << c.name;
        EXPECT_EQ(texts(3), c.error ? Texts{c.error} : Texts{}) << c.name;
        if (!c.copied) clear();  // the failures come first: what is captured below is the finds'
    }
    EXPECT_EQ(traces(), (Texts{"name:dmz\n"}));
    EXPECT_EQ(take(), (Texts{"select securityAreaId from SecurityAreaInterfaces where interfaceName= 'eth2';",
                             "select name from SecurityAreas where securityAreaId= 2;",
                             "select interfaceName from AddressPools where name= 'lan';",
                             "select ipAddress from AddressPools where name= 'lan';",
                             "select securityAreaName from Assets where name= 'pc1';",
                             "select ipAddress from Assets where name= 'pc1';"}));

    // The pool type: a stored -1 and a failure look the same.
    EXPECT_EQ((Ints{get_address_type_by_name(&h, (char*)"lan"), get_address_type_by_name(&h, (char*)"bare"),
                    get_address_type_by_name(&h, (char*)"nowhere")}), (Ints{3, -1, -1}));
    EXPECT_EQ(texts(3), (Texts{"03:mysql_num_rows(), data is empty or error!\n"}));
    EXPECT_EQ(take()[0], "select type from AddressPools where name= 'lan';");
    EXPECT_EQ((Ints{deleteAssetByName(&h, (char*)"pc1"), deleteAssetByName(&h, (char*)"nowhere")}), Ints(2, 0));
    EXPECT_TRUE(traces().empty());
    EXPECT_EQ(take(), (Texts{"delete from Assets where name = 'pc1';", "delete from Assets where name = 'nowhere';"}));
}

// ---- Member and address lists ----

// Members: comma-joined in row order, cut inside the buffer. Addresses: the
// enabled pool of each member up to the first member without one, then the
// enabled assets of the zone; a zone without members has none; failures leave
// the buffer; a list cut at the buffer end stays inside it.
TEST_F(ZonesTest, MemberAndAddressListsOfAZone) {
    exec("insert into SecurityAreas (name) values ('trust'), ('empty'), ('bare')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth0'), (1,'eth1'), (1,'br0'),"
         "(3,'eth5')");
    // eth0: two enabled pools (the first counts); eth1: disabled only (the walk ends there); eth5: no address.
    exec("insert into AddressPools (name, interfaceName, ipAddress, enable) values ('p0','eth0','10.0.0.1',1),"
         "('p0b','eth0','10.0.0.99',1), ('p1','eth1','10.1.0.1',0), ('p2','br0','10.2.0.1',1), ('p5','eth5',NULL,1)");
    exec("insert into Assets (name, ipAddress, securityAreaName, enable) values ('pc1','192.168.1.5','trust',1),"
         "('pc2','192.168.1.6','trust',0), ('pc3','192.168.1.7','empty',1), ('pc4','192.168.1.8','trust',1)");
    // On success the member result set stays allocated: exactly one stored
    // result of the member statement (none in the safe profile).
    char buf[64] = "";
    void* ref = nullptr;
    const long result = leaked_bytes([&] { ref = db_store_result(&h, kMembers1); });
    mysql_free_result(static_cast<MYSQL_RES*>(ref));
    ASSERT_GT(result, 0);
    EXPECT_EQ(leaked_bytes([&] { EXPECT_EQ(selectInterfaceInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), 3); }),
              kSafe ? 0 : result);
    // Fitting exactly with its terminator; the separator cut, the cursor ending
    // exactly at the end; the cursor passing the end.
    expect_cuts(
        [&](char* b, int len) {
            Unreported measured_above;
            return selectInterfaceInfoByNameSA(&h, (char*)"trust", b, len) == 3;
        },
        {{14, "eth0,eth1,br0"}, {10, "eth0,eth1"}, {7, "eth0,e"}});
    EXPECT_EQ(traces(), (Texts{"intFaceName[0]->interfaceName:eth0\n", "intFaceName[1]->interfaceName:eth1\n",
                               "intFaceName[2]->interfaceName:br0\n"}));
    EXPECT_EQ(take(), (Texts{zone_lookup("trust"), kMembers1}));
    strcpy(buf, "old");
    clear();
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"empty", buf, sizeof buf), nullptr);
    EXPECT_EQ(sent().size(), 2u);  // the assets are not looked at
    EXPECT_EQ((Ints{selectInterfaceInfoByNameSA(&h, (char*)"nowhere", buf, sizeof buf),
                    selectInterfaceInfoByNameSA(&h, (char*)"empty", buf, sizeof buf),
                    selectInterfaceInfoByNameSA(&h, (char*)"trust", buf, 0)}), Ints(3, -1));
    fail_fetch_at(1);  // the second call's: the first finds no row
    EXPECT_EQ((std::vector<char*>{selectIpaddressInfoByNameSA(&h, (char*)"nowhere", buf, sizeof buf),
                                  selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf),
                                  selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, 0)}), std::vector<char*>(3));
    EXPECT_EQ(texts(3), (Texts{"securityAreaId: 2\n", "07:mysql_num_rows(), data is empty or error!",
                               "mysql_num_rows(), data is empty or error!\n",
                               "mysql_num_rows(), data is empty or error!",
                               "03:mysql_num_rows(), data is empty or error!\n",
                               "04:mysql_fetch_row() exec error!\n"}));
    EXPECT_STREQ(buf, "old");

    clear();
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), buf);
    EXPECT_STREQ(buf, "10.0.0.1,192.168.1.5,192.168.1.8");
    EXPECT_EQ(texts(3), (Texts{"securityAreaId: 1\n", "10:mysql_num_rows(), ipAddress is empty or error!\n"}));
    EXPECT_EQ(traces(), (Texts{"intFaceName[0]->interfaceName:eth0\n", "ipAddress = 10.0.0.1\n",
                               "intFaceName[1]->interfaceName:eth1\n", "ipAddress = 192.168.1.5\n",
                               "ipAddress = 192.168.1.8\n",
                               "mysql return address: 10.0.0.1,192.168.1.5,192.168.1.8\n"}));
    EXPECT_EQ(take(), (Texts{"select securityAreaId from SecurityAreas where name = 'trust';", kMembers1,
                             "select ipAddress from AddressPools where interfaceName= 'eth0' and enable = 1;",
                             "select ipAddress from AddressPools where interfaceName= 'eth1' and enable = 1;",
                             "select ipAddress from Assets where securityAreaName = 'trust' and enable = 1;"}));
    expect_cuts([&](char* b, int len) { return selectIpaddressInfoByNameSA(&h, (char*)"trust", b, len) == b; },
                {
                    {32, "10.0.0.1,192.168.1.5,192.168.1."},
                    {21, "10.0.0.1,192.168.1.5"},  // the separator cut at the last byte
                    {20, "10.0.0.1,192.168.1."},   // cut exactly at the end: nothing follows past it
                    {1, ""},                       // nothing fits, not even "any"
                });
    strcpy(buf, "keep");  // a negative length sets no bound: the caller vouches for its buffer
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, -5), buf);
    EXPECT_STREQ(buf, "10.0.0.1,192.168.1.5,192.168.1.8");
    clear();
    EXPECT_STREQ(selectIpaddressInfoByNameSA(&h, (char*)"bare", buf, sizeof buf), "any");
    EXPECT_EQ(texts(3), (Texts{"securityAreaId: 3\n", "11:mysql_fetch_row() exec error!\n",
                               "10:mysql_num_rows(), ipAddress is empty or error!\n"}));
    exec("update AddressPools set enable = 0");  // assets alone: no leading separator
    EXPECT_STREQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), "192.168.1.5,192.168.1.8");

    // The member list cannot be read: the buffer is not cleared, and the asset
    // addresses go over its start after a separator.
    TableAside aside("SecurityAreaInterfaces");
    strcpy(buf, "OLDTEXT");
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), buf);
    EXPECT_STREQ(buf, ",192.168.1.5,192.168.1.8");
}

// ---- Address pools ----

TEST_F(ZonesTest, PoolIsAddedOrReplacedByNameAndSingleColumnWritesAreTraced) {
    EXPECT_EQ(util_db_query_commonAddressPools(&h), 0);  // the dump: from this module
    EXPECT_EQ(traces(kPoolsFile), (Texts{"The total rows is: 0\n", "The total fields is: 6\n"}));
    EXPECT_EQ(take(), (Texts{"select * from AddressPools"}));
    EXPECT_EQ((Ints{insertAddressPoolsTable(&h, (char*)"lan", (char*)"eth0", (char*)"10.0.0.0/24", 2, 1),
                    insertAddressPoolsTable(&h, (char*)"lan", (char*)"eth3", (char*)"10.3.0.1-10.3.0.9", -4, 0)}),
              Ints(2, 0));
    EXPECT_TRUE(traces().empty());
    const std::string look = "select addressPoolId from AddressPools where name = 'lan';";
    EXPECT_EQ(take(), (Texts{look, "insert into AddressPools (name,interfaceName,ipAddress,type,enable) "
                                   "VALUES('lan','eth0','10.0.0.0/24',2,1);",
                             look, "UPDATE AddressPools SET interfaceName = 'eth3',ipAddress = '10.3.0.1-10.3.0.9',"
                                   "type = -4,enable = 0 WHERE name = 'lan'"}));
    EXPECT_EQ((Ints{updateAddressPoolsTableEnable(&h, (char*)"lan", 5),
                    updateAddressPoolsTableInterface(&h, (char*)"lan", (char*)"eth1"),
                    updateAddressPoolsTableIp(&h, (char*)"nowhere", (char*)"10.0.0.1"),
                    addAddressPoolsNameTable(&h, (char*)"wan"), deleteAddressPoolsTableByName(&h, (char*)"lan"),
                    deleteAddressPoolsTableByName(&h, nullptr)}), Ints(6, 0));  // the last name is not checked
    const Texts statements = {"UPDATE AddressPools SET enable = 5 WHERE name = 'lan'",
                              "UPDATE AddressPools SET interfaceName = 'eth1' WHERE name = 'lan'",
                              "UPDATE AddressPools SET ipAddress = '10.0.0.1' WHERE name = 'nowhere'",
                              "insert into AddressPools (name) VALUES('wan');",
                              "delete from AddressPools where name = 'lan'",
                              "delete from AddressPools where name = '(null)'"};
    Texts traced;
    for (const std::string& s : statements) traced.push_back("mysql cmd: " + s + "\n");
    EXPECT_EQ(traces(kPoolsFile), traced);
    EXPECT_EQ(take(), statements);
}
