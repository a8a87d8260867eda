// Security zones, their member interfaces, the zone look-ups, address pools and
// assets by name, against the private server.
#include <string.h>

#include <string>
#include <vector>

#include "harness.h"

using namespace testbed;
using Texts = std::vector<std::string>;

namespace {

std::string zone_lookup(const std::string& name) {
    return "select securityAreaId from SecurityAreas where name= '" + name + "';";
}

const char* const kMembers1 = "select interfaceName from SecurityAreaInterfaces where securityAreaId= 1;";

// Moves a table out of the way so that statements on it fail; puts it back.
class TableAside {
public:
    explicit TableAside(std::string table) : table_(std::move(table)) {
        exec("rename table " + table_ + " to " + table_ + "Aside");
    }
    ~TableAside() { exec("rename table " + table_ + "Aside to " + table_); }

private:
    std::string table_;
};

class ZonesTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        truncate({"SecurityAreas", "SecurityAreaInterfaces", "AddressPools", "Assets"});
        clear();
    }

    // Debug texts of the table modules (not the core's), with their files.
    Texts traces(Texts* files = nullptr) const {
        Texts out;
        for (const LogRecord& r : logs()) {
            std::string file;
            const std::string text = strip_site(r.text, &file);
            if (r.priority == 7 && file.rfind("db_tables/", 0) == 0) {
                out.push_back(text);
                if (files != nullptr) {
                    files->push_back(file);
                }
            }
        }
        return out;
    }
};

// A caller buffer with guard bytes after its declared length.
struct Guarded {
    char buf[48];
    int len;
    explicit Guarded(int n, const char* init = "") : len(n) {
        memset(buf, 'X', sizeof buf);
        strcpy(buf, init);
    }
    bool guard_intact() const { return std::string(buf + len, sizeof buf - len) == std::string(sizeof buf - len, 'X'); }
};

}  // namespace

// ---- Zones and members ----

TEST_F(ZonesTest, InsertRefusesAnExistingNameAndUpdateWritesEnableAsGiven) {
    EXPECT_EQ(insertSecurityAreas(&h, (char*)"trust"), 0);
    EXPECT_EQ(sent(), (Texts{zone_lookup("trust"), "insert into SecurityAreas (name) VALUES('trust');"}));
    EXPECT_EQ(traces(), (Texts{"mysql cmd: " + zone_lookup("trust") + "\n"}));
    clear();
    EXPECT_EQ(insertSecurityAreas(&h, (char*)"trust"), -1);
    EXPECT_EQ(sent(), (Texts{zone_lookup("trust")}));
    EXPECT_EQ(texts(3), (Texts{"mysql_num_rows():data is exist,please check the para that you input!\n"}));

    clear();
    EXPECT_EQ(updateSecurityAreas(&h, (char*)"trust", 7), 0);
    EXPECT_EQ(updateSecurityAreas(&h, (char*)"nowhere", 0), 0);
    EXPECT_EQ(sent()[0], "UPDATE SecurityAreas SET enable = 7 WHERE name = 'trust';");
    EXPECT_EQ(traces()[0], "mysql cmd: UPDATE SecurityAreas SET enable = 7 WHERE name = 'trust';\n");
    EXPECT_EQ(rows("select name, enable from SecurityAreas"), (std::vector<Row>{{"trust", "7"}}));

    clear();
    EXPECT_EQ(insertSecurityAreas(nullptr, (char*)"x") + updateSecurityAreas(&h, nullptr, 1) +
                  insertMainFrame(&h, (char*)"trust", nullptr) + deleteSecurityAreas(&h, nullptr),
              -4);
    EXPECT_TRUE(sent().empty());
    EXPECT_EQ(insertSecurityAreas(&h, (char*)"it's"), -1);  // not escaped: the statement breaks
}

TEST_F(ZonesTest, DeleteRemovesMembersFirstThenTheZone) {
    exec("insert into SecurityAreas (name) values ('trust'), ('dmz')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth0'), (1,'eth1'), (2,'eth2')");
    EXPECT_EQ(deleteSecurityAreas(&h, (char*)"trust"), 0);
    EXPECT_EQ(sent(), (Texts{zone_lookup("trust"), "delete from SecurityAreaInterfaces where securityAreaId = 1;",
                             "delete from SecurityAreas where name = 'trust';"}));
    EXPECT_EQ(texts(3), (Texts{"1\t\n"}));  // the id trace at the error priority
    EXPECT_EQ(rows("select interfaceName from SecurityAreaInterfaces"), (std::vector<Row>{{"eth2"}}));
    EXPECT_EQ(count("SecurityAreas"), 1);

    clear();
    EXPECT_EQ(deleteSecurityAreas(&h, (char*)"trust"), -1);
    fail_fetch_at(1);
    EXPECT_EQ(deleteSecurityAreas(&h, (char*)"dmz"), -1);
    EXPECT_EQ(sent().size(), 2u);
    EXPECT_EQ(texts(3), (Texts{"mysql_num_rows(), data is empty or error!\n", "mysql_fetch_row() exec error!\n"}));

    TableAside aside("SecurityAreaInterfaces");
    clear();
    EXPECT_EQ(deleteSecurityAreas(&h, (char*)"dmz"), -1);
    EXPECT_EQ(sent().size(), 2u);  // the zone row is not touched
    EXPECT_EQ(count("SecurityAreas"), 1);
}

TEST_F(ZonesTest, MembersAreAddedOneAtATimeAndClearedTogether) {
    exec("insert into SecurityAreas (name) values ('trust'), ('dmz')");
    EXPECT_EQ(insertMainFrame(&h, (char*)"dmz", (char*)"eth1"), 0);
    EXPECT_EQ(insertMainFrame(&h, (char*)"dmz", (char*)"eth1"), 0);
    EXPECT_EQ(sent()[1], "insert into SecurityAreaInterfaces(securityAreaId,interfaceName) VALUES(2,'eth1');");
    EXPECT_EQ(count("SecurityAreaInterfaces", "securityAreaId = 2 and interfaceName = 'eth1'"), 2);
    EXPECT_TRUE(traces().empty());

    clear();
    EXPECT_EQ(deleteMainFrame(&h, (char*)"dmz"), 0);
    EXPECT_EQ(deleteMainFrame(&h, (char*)"trust"), 0);  // no members
    EXPECT_EQ(sent()[1], "delete from SecurityAreaInterfaces where securityAreaId = 2;");
    Texts files;
    EXPECT_EQ(traces(&files), (Texts{"2\t\n", "1\t\n"}));
    EXPECT_EQ(files[0], "db_tables/util-db-SecurityAreas.cpp");
    EXPECT_EQ(count("SecurityAreaInterfaces"), 0);
    EXPECT_EQ(count("SecurityAreas"), 2);  // the zones stay

    clear();
    EXPECT_EQ(insertMainFrame(&h, (char*)"nowhere", (char*)"eth0"), -1);
    EXPECT_EQ(deleteMainFrame(&h, (char*)"nowhere"), -1);
    fail_fetch_at(1);
    EXPECT_EQ(insertMainFrame(&h, (char*)"dmz", (char*)"eth0"), -1);
    EXPECT_EQ(texts(3), (Texts{"mysql_num_rows(), data is empty or error!", "mysql_num_rows(), data is empty or error!",
                               "mysql_fetch_row() exec error!"}));
    EXPECT_EQ(sent().size(), 3u);
}

// ---- Zone look-ups ----

TEST_F(ZonesTest, InterfaceToZoneNameAndItsNumberedFailures) {
    exec("insert into SecurityAreas (name) values ('trust'), ('dmz')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (2,'eth2'), (7,'eth7')");
    char buf[32] = "old";
    EXPECT_EQ(select_name_by_interfacename_SA(&h, (char*)"eth2", buf), buf);
    EXPECT_STREQ(buf, "dmz");
    EXPECT_EQ(sent(), (Texts{"select securityAreaId from SecurityAreaInterfaces where interfaceName= 'eth2';",
                             "select name from SecurityAreas where securityAreaId= 2;"}));
    EXPECT_EQ(traces(), (Texts{"name:dmz\n"}));

    const struct {
        const char* ifname;
        int fail_fetch;
        const char* message;
    } failures[] = {
        {"eth9", 0, "03:mysql_num_rows(), data is empty or error!"},
        {"eth2", 1, "04:mysql_fetch_row() exec error!"},
        {"eth7", 0, "07:mysql_num_rows(), data is empty or error!"},  // a member of a missing zone
        {"eth2", 2, "08:mysql_fetch_row() exec error!"},
    };
    for (const auto& f : failures) {
        clear();
        strcpy(buf, "old");
        fail_fetch_at(f.fail_fetch);
        EXPECT_EQ(select_name_by_interfacename_SA(&h, (char*)f.ifname, buf), nullptr) << f.message;
        EXPECT_EQ(texts(3), (Texts{f.message}));
        EXPECT_STREQ(buf, "old");
    }
}

TEST_F(ZonesTest, MemberListIsCommaJoinedInRowOrderAndCutInsideTheBuffer) {
    exec("insert into SecurityAreas (name) values ('trust'), ('empty')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth0'), (1,'eth1'), (1,'br0')");
    const struct {
        int len;
        const char* text;
    } cuts[] = {
        {14, "eth0,eth1,br0"},  // fits exactly with its terminator
        {13, "eth0,eth1,br"},   // the last name cut at the last byte
        {10, "eth0,eth1"},      // the separator cut: the cursor ends exactly at the end
        {9, "eth0,eth"},        // a name cut exactly at the end, the rest not written
        {7, "eth0,e"},          // the cursor passes the end
    };
    for (const auto& c : cuts) {
        clear();
        Guarded out(c.len);
        EXPECT_EQ(selectInterfaceInfoByNameSA(&h, (char*)"trust", out.buf, out.len), 3) << c.len;
        EXPECT_STREQ(out.buf, c.text) << c.len;
        EXPECT_TRUE(out.guard_intact()) << c.len;
    }
    EXPECT_EQ(sent(), (Texts{zone_lookup("trust"), kMembers1}));
    EXPECT_EQ(traces(), (Texts{"intFaceName[0]->interfaceName:eth0\n", "intFaceName[1]->interfaceName:eth1\n",
                               "intFaceName[2]->interfaceName:br0\n"}));

    clear();
    char buf[16] = "old";
    EXPECT_EQ(selectInterfaceInfoByNameSA(&h, (char*)"nowhere", buf, sizeof buf), -1);
    EXPECT_EQ(selectInterfaceInfoByNameSA(&h, (char*)"empty", buf, sizeof buf), -1);
    fail_fetch_at(1);
    EXPECT_EQ(selectInterfaceInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), -1);
    EXPECT_EQ(texts(3), (Texts{"mysql_num_rows(), data is empty or error!\n", "mysql_num_rows(), data is empty or error!",
                               "mysql_fetch_row() exec error!\n"}));
    EXPECT_EQ(selectInterfaceInfoByNameSA(&h, (char*)"trust", buf, 0), -1);
    EXPECT_STREQ(buf, "old");
}

TEST_F(ZonesTest, AddressListWalksPoolsUntilTheFirstMemberWithoutOneThenAssets) {
    exec("insert into SecurityAreas (name) values ('trust')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth0'), (1,'eth1'), (1,'eth2')");
    // eth0: two enabled pools (the first counts); eth1: disabled only (the walk ends there).
    exec("insert into AddressPools (name, interfaceName, ipAddress, enable) values ('p0','eth0','10.0.0.1',1),"
         "('p0b','eth0','10.0.0.99',1), ('p1','eth1','10.1.0.1',0), ('p2','eth2','10.2.0.1',1)");
    exec("insert into Assets (name, ipAddress, securityAreaName, enable) values ('pc1','192.168.1.5','trust',1),"
         "('pc2','192.168.1.6','trust',0), ('pc3','192.168.1.7','dmz',1), ('pc4','192.168.1.8','trust',1)");
    char buf[64] = "";
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), buf);
    EXPECT_STREQ(buf, "10.0.0.1,192.168.1.5,192.168.1.8");
    EXPECT_EQ(sent(), (Texts{"select securityAreaId from SecurityAreas where name = 'trust';", kMembers1,
                             "select ipAddress from AddressPools where interfaceName= 'eth0' and enable = 1;",
                             "select ipAddress from AddressPools where interfaceName= 'eth1' and enable = 1;",
                             "select ipAddress from Assets where securityAreaName = 'trust' and enable = 1;"}));
    EXPECT_EQ(texts(3), (Texts{"securityAreaId: 1\n", "10:mysql_num_rows(), ipAddress is empty or error!\n"}));
    EXPECT_EQ(traces(), (Texts{"intFaceName[0]->interfaceName:eth0\n", "ipAddress = 10.0.0.1\n",
                               "intFaceName[1]->interfaceName:eth1\n", "ipAddress = 192.168.1.5\n",
                               "ipAddress = 192.168.1.8\n",
                               "mysql return address: 10.0.0.1,192.168.1.5,192.168.1.8\n"}));

    exec("update AddressPools set enable = 0");  // assets alone: no leading separator
    EXPECT_STREQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), "192.168.1.5,192.168.1.8");

    exec("update Assets set enable = 0");
    exec("update AddressPools set enable = 1, ipAddress = NULL where name = 'p0'");
    exec("delete from AddressPools where name = 'p0b'");
    clear();
    EXPECT_STREQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), "any");
    EXPECT_EQ(texts(3), (Texts{"securityAreaId: 1\n", "11:mysql_fetch_row() exec error!\n",
                               "10:mysql_num_rows(), ipAddress is empty or error!\n"}));
    EXPECT_EQ(sent().size(), 4u);
}

TEST_F(ZonesTest, AddressListFailuresLeaveTheBufferAndAZoneWithoutMembersHasNoList) {
    exec("insert into SecurityAreas (name) values ('lonely'), ('trust')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (2,'eth0')");
    exec("insert into Assets (name, ipAddress, securityAreaName) values ('pc1','192.168.1.5','lonely'),"
         "('pc2','192.168.2.5','trust')");
    char buf[32] = "old";
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"lonely", buf, sizeof buf), nullptr);
    EXPECT_EQ(sent().size(), 2u);  // the assets are not looked at
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"nowhere", buf, sizeof buf), nullptr);
    fail_fetch_at(1);
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), nullptr);
    EXPECT_EQ(texts(3), (Texts{"securityAreaId: 1\n", "07:mysql_num_rows(), data is empty or error!",
                               "03:mysql_num_rows(), data is empty or error!\n", "04:mysql_fetch_row() exec error!\n"}));
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, 0), nullptr);
    EXPECT_STREQ(buf, "old");

    // The member list cannot be read: the buffer is not cleared, and the asset
    // addresses go over its start after a separator.
    TableAside aside("SecurityAreaInterfaces");
    strcpy(buf, "OLDTEXT");
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", buf, sizeof buf), buf);
    EXPECT_STREQ(buf, ",192.168.2.5");
}

TEST_F(ZonesTest, AddressListCutAtTheBufferEndStaysInside) {
    exec("insert into SecurityAreas (name) values ('trust')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth0'), (1,'eth1')");
    exec("insert into AddressPools (name, interfaceName, ipAddress, enable) values ('p0','eth0','10.0.0.1',1),"
         "('p1','eth1','10.0.0.2',1)");
    exec("insert into Assets (name, ipAddress, securityAreaName) values ('pc1','10.9.9.9','trust')");
    const struct {
        int len;
        const char* text;
    } cuts[] = {
        {26, "10.0.0.1,10.0.0.2,10.9.9."},
        {18, "10.0.0.1,10.0.0.2"},  // the asset's separator cut at the last byte
        {17, "10.0.0.1,10.0.0."},   // cut exactly at the end: nothing follows past it
        {12, "10.0.0.1,10"},
        {1, ""},  // nothing fits, not even "any"
    };
    for (const auto& c : cuts) {
        Guarded out(c.len);
        EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", out.buf, out.len), out.buf) << c.len;
        EXPECT_STREQ(out.buf, c.text) << c.len;
        EXPECT_TRUE(out.guard_intact()) << c.len;
    }
    Guarded negative(0, "keep");  // a negative length passes the checks but gives no room
    clear();
    EXPECT_EQ(selectIpaddressInfoByNameSA(&h, (char*)"trust", negative.buf, -5), negative.buf);
    EXPECT_STREQ(negative.buf, "keep");
    EXPECT_EQ(sent().size(), 5u);
}

TEST_F(ZonesTest, DumpsLogOneDebugRecordPerCellFromTheirModule) {
    exec("insert into SecurityAreas (name) values ('trust')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth0')");
    exec("insert into AddressPools (name) values ('p')");
    EXPECT_EQ(util_db_query_commonSecurityAreas(&h), 0);
    EXPECT_EQ(util_db_query_commonSecurityAreaInterfaces(&h), 0);
    EXPECT_EQ(util_db_query_commonAddressPools(&h), 0);
    EXPECT_EQ(sent(), (Texts{"select * from SecurityAreas", "select * from SecurityAreaInterfaces",
                             "select * from AddressPools"}));
    Texts files;
    EXPECT_EQ(traces(&files),
              (Texts{"The total rows is: 1\n", "The total fields is: 3\n", "1\t", "trust\t", "1\t", "\n",
                     "The total rows is: 1\n", "The total fields is: 3\n", "1\t", "1\t", "eth0\t", "\n",
                     "The total rows is: 1\n", "The total fields is: 6\n", "1\t", "p\t", "(null)\t", "(null)\t",
                     "(null)\t", "0\t", "\n"}));
    ASSERT_EQ(files.size(), 21u);
    EXPECT_EQ(files[0], "db_tables/util-db-SecurityAreas.cpp");
    EXPECT_EQ(files[20], "db_tables/util-db-addresspools.cpp");
    EXPECT_EQ(util_db_query_commonSecurityAreaInterfaces(nullptr), -1);
    EXPECT_EQ(util_db_query_commonAddressPools(nullptr), -1);
}

// ---- Address pools ----

TEST_F(ZonesTest, PoolIsAddedOrReplacedByNameAndSingleColumnWritesAreTraced) {
    EXPECT_EQ(insertAddressPoolsTable(&h, (char*)"lan", (char*)"eth0", (char*)"10.0.0.0/24", 2, 1), 0);
    EXPECT_EQ(sent(), (Texts{"select addressPoolId from AddressPools where name = 'lan';",
                             "insert into AddressPools (name,interfaceName,ipAddress,type,enable) "
                             "VALUES('lan','eth0','10.0.0.0/24',2,1);"}));
    EXPECT_EQ(addAddressPoolsNameTable(&h, (char*)"lan"), 0);  // a second row of the name
    clear();
    EXPECT_EQ(insertAddressPoolsTable(&h, (char*)"lan", (char*)"eth3", (char*)"10.3.0.1-10.3.0.9", -4, 0), 0);
    EXPECT_EQ(sent()[1], "UPDATE AddressPools SET interfaceName = 'eth3',ipAddress = '10.3.0.1-10.3.0.9',"
                         "type = -4,enable = 0 WHERE name = 'lan'");
    EXPECT_EQ(rows("select interfaceName, ipAddress, type, enable from AddressPools"),
              (std::vector<Row>(2, Row{"eth3", "10.3.0.1-10.3.0.9", "-4", "0"})));
    EXPECT_TRUE(traces().empty());

    clear();
    EXPECT_EQ(updateAddressPoolsTableEnable(&h, (char*)"lan", 5), 0);
    EXPECT_EQ(updateAddressPoolsTableInterface(&h, (char*)"lan", (char*)"eth1"), 0);
    EXPECT_EQ(updateAddressPoolsTableIp(&h, (char*)"nowhere", (char*)"10.0.0.1"), 0);
    EXPECT_EQ(addAddressPoolsNameTable(&h, (char*)"wan"), 0);
    EXPECT_EQ(deleteAddressPoolsTableByName(&h, (char*)"lan"), 0);
    EXPECT_EQ(deleteAddressPoolsTableByName(&h, nullptr), 0);  // the name is not checked
    const Texts statements = {"UPDATE AddressPools SET enable = 5 WHERE name = 'lan'",
                              "UPDATE AddressPools SET interfaceName = 'eth1' WHERE name = 'lan'",
                              "UPDATE AddressPools SET ipAddress = '10.0.0.1' WHERE name = 'nowhere'",
                              "insert into AddressPools (name) VALUES('wan');",
                              "delete from AddressPools where name = 'lan'",
                              "delete from AddressPools where name = '(null)'"};
    EXPECT_EQ(sent(), statements);
    Texts expected, files;
    for (const std::string& s : statements) {
        expected.push_back("mysql cmd: " + s + "\n");
    }
    EXPECT_EQ(traces(&files), expected);
    EXPECT_EQ(files[0], "db_tables/util-db-addresspools.cpp");
    EXPECT_EQ(rows("select name, interfaceName from AddressPools"), (std::vector<Row>{{"wan", std::nullopt}}));

    clear();
    EXPECT_EQ(insertAddressPoolsTable(&h, (char*)"lan", (char*)"eth0", nullptr, 1, 1) +
                  updateAddressPoolsTableIp(&h, (char*)"lan", nullptr) + deleteAddressPoolsTableByName(nullptr, nullptr),
              -3);
    EXPECT_TRUE(sent().empty());
}

TEST_F(ZonesTest, PoolLookupsCopyTheFirstRowAndRefuseNullValues) {
    exec("insert into AddressPools (name, interfaceName, ipAddress, type) values ('lan','eth0','10.0.0.0/24',3),"
         "('lan','eth9','10.9.0.0/24',4), ('bare','eth5',NULL,-1)");
    char buf[32] = "old";
    EXPECT_EQ(select_interface_by_name_AddPools(&h, (char*)"lan", buf), buf);
    EXPECT_STREQ(buf, "eth0");
    EXPECT_EQ(select_ipAddress_by_name_ipAdd(&h, (char*)"lan", buf), buf);
    EXPECT_STREQ(buf, "10.0.0.0/24");
    EXPECT_EQ(get_address_type_by_name(&h, (char*)"lan"), 3);
    EXPECT_EQ(get_address_type_by_name(&h, (char*)"bare"), -1);  // a stored -1
    EXPECT_EQ(sent(), (Texts{"select interfaceName from AddressPools where name= 'lan';",
                             "select ipAddress from AddressPools where name= 'lan';",
                             "select type from AddressPools where name= 'lan';",
                             "select type from AddressPools where name= 'bare';"}));
    EXPECT_TRUE(texts(3).empty());

    strcpy(buf, "old");
    clear();
    EXPECT_EQ(select_ipAddress_by_name_ipAdd(&h, (char*)"bare", buf), nullptr);
    EXPECT_EQ(select_interface_by_name_AddPools(&h, (char*)"nowhere", buf), nullptr);
    EXPECT_EQ(get_address_type_by_name(&h, (char*)"nowhere"), -1);
    fail_fetch_at(1);
    EXPECT_EQ(get_address_type_by_name(&h, (char*)"lan"), -1);
    EXPECT_EQ(texts(3), (Texts{"04:mysql_fetch_row() exec error!\n", "03:mysql_num_rows(), data is empty or error!\n",
                               "03:mysql_num_rows(), data is empty or error!\n", "04:mysql_fetch_row() exec error!\n"}));
    EXPECT_STREQ(buf, "old");
}

// ---- Assets ----

TEST_F(ZonesTest, AssetsByName) {
    exec("insert into Assets (name, ipAddress, securityAreaName) values ('pc1','192.168.1.5','trust'),"
         "('pc1','192.168.1.6','dmz'), ('bare','192.168.1.9',NULL)");
    char buf[32] = "old";
    EXPECT_EQ(selectSAnameByAssetname(&h, (char*)"pc1", buf), buf);
    EXPECT_STREQ(buf, "trust");
    EXPECT_EQ(selectipAddressByAssetname(&h, (char*)"pc1", buf), buf);
    EXPECT_STREQ(buf, "192.168.1.5");
    EXPECT_EQ(sent(), (Texts{"select securityAreaName from Assets where name= 'pc1';",
                             "select ipAddress from Assets where name= 'pc1';"}));

    strcpy(buf, "old");
    clear();
    EXPECT_EQ(selectSAnameByAssetname(&h, (char*)"nowhere", buf), nullptr);
    fail_fetch_at(1);
    EXPECT_EQ(selectipAddressByAssetname(&h, (char*)"pc1", buf), nullptr);
    EXPECT_EQ(selectSAnameByAssetname(&h, (char*)"bare", buf), nullptr);  // a zone that is not set
    EXPECT_EQ(texts(3), (Texts{"03:mysql_num_rows(), data is empty or error!", "04:mysql_fetch_row() exec error!"}));
    EXPECT_STREQ(buf, "old");

    clear();
    EXPECT_EQ(deleteAssetByName(&h, (char*)"pc1"), 0);
    EXPECT_EQ(deleteAssetByName(&h, (char*)"nowhere"), 0);
    EXPECT_EQ(deleteAssetByName(&h, nullptr), -1);
    EXPECT_EQ(sent(), (Texts{"delete from Assets where name = 'pc1';", "delete from Assets where name = 'nowhere';"}));
    EXPECT_EQ(count("Assets"), 1);
    EXPECT_TRUE(traces().empty());
}
