// Applications and traits, ARP-spoof and asset properties, session controls,
// whitelist references and anti-attack rules, against the private server.
#include <string.h>

#include <regex>
#include <set>

#include "harness.h"

using namespace testbed;
using Strings = std::vector<std::string>;
using Ints = std::vector<int>;
using Set = std::set<std::string>;

namespace {

const char* const kEmpty = "mysql_num_rows(), data is empty or error!";
const char* const kFetch = "mysql_fetch_row() exec error!";

class InspectionTest : public LibraryTest {
protected:
    void SetUp() override {
        truncate({"Apps", "Traits", "DpiSubscriptions", "AssetProperties", "SessionControls", "PolicyToDpiWhitelist",
                  "AntiAttacks", "Assets", "SecurityAreas", "SecurityAreaInterfaces"});
        LibraryTest::SetUp();
    }

    // The statements sent since the last clear; clears the capture.
    Strings take() {
        const Strings s = sent();
        clear();
        return s;
    }
};

// ---- Applications and traits ----

char* S(const char* s) { return const_cast<char*>(s); }

db_app_info app(const char* name, int type, int inherit, const char* sport = nullptr, const char* cport = nullptr,
                const char* ppdname = nullptr, const char* desc = nullptr) {
    return db_app_info{0, S(name), type, S(sport), S(cport), inherit, S(ppdname), S(desc), nullptr};
}

// A field read to its capacity ("-" for NULL): a cut value has no terminator.
std::string field(const char* s, size_t capacity = 256) { return s ? std::string(s, strnlen(s, capacity)) : "-"; }

std::string line(const db_app_info& l) {
    return std::to_string(l.appid) + "|" + field(l.pname) + "|" + std::to_string(l.type) + "|" + field(l.sport) + "|" +
           field(l.cport) + "|" + std::to_string(l.inherit) + "|" + field(l.ppdname) + "|" + field(l.desc, 1024);
}

std::string line(const db_trait_info& l) {
    return std::to_string(l.traitid) + "|" + std::to_string(l.appid) + "|" + field(l.toffset) + "|" + field(l.trait) +
           "|" + field(l.depth);
}

int release(db_app_info* list) { return db_free_app_info(list); }
int release(db_trait_info* list) { return db_free_trait_info(list); }

// The records of a list, which is then freed (0, or -1 for no list).
template <class T>
Strings render(T* list) {
    Strings out;
    for (const T* l = list; l != nullptr; l = l->next) out.push_back(line(*l));
    EXPECT_EQ(release(list), list ? 0 : -1);
    return out;
}

TEST_F(InspectionTest, AppAndTraitStatementsFollowTheFieldsPresent) {
    db_app_info a[] = {app("web", 2, 0, "80"), app("full", 6, 2, "", "1024", "http", "d"), app("web", 1, 0),
                       app("web", -1, 2, nullptr, "", nullptr, "x"), app("web", 6, -1)};
    db_trait_info t[] = {{0, 7, nullptr, S("GET /"), nullptr, nullptr}, {0, 7, S("0"), S("GET /"), S(""), nullptr},
                         {0, 7, S("0"), S("'POST'"), nullptr, nullptr}, {0, 7, nullptr, nullptr, nullptr, nullptr},
                         {0, -3, nullptr, nullptr, S("4"), nullptr}, {0, 0, nullptr, nullptr, S("4"), nullptr}};
    // An update with nothing to set still runs; trait values go unquoted; a
    // negative trait id passes the update and the delete, not the insert; 0 passes none.
    EXPECT_EQ((Ints{db_add_app(&h, &a[0]), db_add_app(&h, &a[1]), db_update_app_by_name(&h, &a[2]),
                    db_update_app_by_name(&h, &a[3]), db_update_app_by_name(&h, &a[4]), db_del_app_by_name(&h, "none"),
                    db_add_trait(&h, &t[0]), db_add_trait(&h, &t[1]),
                    db_update_traitby_appid(&h, &t[2]), db_update_traitby_appid(&h, &t[3]),
                    db_update_traitby_appid(&h, &t[4]), db_add_trait(&h, &t[4]), db_del_trait_by_appid(&h, -3),
                    db_add_trait(&h, &t[5]), db_update_traitby_appid(&h, &t[5])}),
              (Ints{0, 0, 0, 0, -1, 0, 0, 0, 0, -1, 0, -1, 0, -1, -1}));
    const Strings expected = {
        "insert into Apps(name, inherit, type, serverPort) VALUES('web', 0, '2', '80');",
        "insert into Apps(name, inherit, serverPort, clientPort, predefineName, description) "
        "VALUES('full', 2, '', '1024', 'http', 'd');",
        "update Apps set type = 1, inherit = 0 where name = 'web';",
        "update Apps set clientPort = '', description = 'x' where name = 'web';",
        "update Apps set where name = 'web';", "delete from Apps where name = 'none'",
        "insert into Traits (appId, trait) VALUES(7, 'GET /');",
        "insert into Traits (appId, toffset, trait, depth) VALUES(7, '0', 'GET /', '');",
        "update Traits set toffset = 0, trait = 'POST' where appId = 7;", "update Traits set where appId = 7;",
        "update Traits set depth = 4 where appId = -3;", "delete from Traits where appId = -3;"};
    // Each traced by this module, the text ending with the record's own site.
    const std::regex trace("(db_tables/util-db-Apps\\.cpp:[0-9]+) mysql cmd: (.*) \\(\\1\\)\n");
    Strings traced;
    std::smatch m;
    for (const LogRecord& r : logs()) {
        if (r.priority == 7 && std::regex_match(r.text, m, trace)) traced.push_back(m[2]);
    }
    EXPECT_EQ(traced, expected);
    EXPECT_EQ(take(), expected);
    EXPECT_EQ(render(db_get_trait_info_by_appid(&h, -2)).size() + render(db_get_trait_info_by_appid(&h, 0)).size(), 0u);
    EXPECT_EQ(take(), Strings{"select * from Traits where appId = -2;"});  // -2 queried, no row; 0 refused
}

// The getters list the rows in order with bounded buffers. Failing each of
// their allocations in turn gives NULL, and the only bytes left behind are
// those of a record that is on no list yet.
TEST_F(InspectionTest, GettersListRowsInOrderAndFailEachAllocation) {
    const std::string n300(300, 'n'), d1100(1100, 'd');
    exec("insert into Apps values (5, 'a', NULL, NULL, '8080', NULL, NULL, NULL), "
         "(9, 'a', 3, '80', '', 1, 'http', '" + d1100 + "'), (12, '" + n300 + "', 1, NULL, NULL, 0, NULL, 'x')");
    exec("insert into Traits values (3, 7, '0', 'GET', NULL), (4, 8, '1', 'x', '2'), (6, 7, NULL, '" + n300 + "','9')");
    EXPECT_EQ(render(db_get_app_info_by_name(&h, "a")),
              (Strings{"5|a|0|-|8080|0|-|-", "9|a|3|80||1|http|" + d1100.substr(0, 1024)}));
    EXPECT_EQ(render(db_get_app_info_by_name(&h, n300.c_str())), Strings{"12|" + n300.substr(0, 256) + "|1|-|-|0|-|x"});
    EXPECT_EQ(render(db_get_trait_info_by_appid(&h, 7)),
              (Strings{"3|7|0|GET|-", "6|7|-|" + n300.substr(0, 256) + "|9"}));
    EXPECT_EQ(take(), (Strings{"select * from Apps where name= 'a';", "select * from Apps where name= '" + n300 + "';",
                               "select * from Traits where appId = 7;"}));

    // Allocation n failing in a pass over both getters: bytes left behind, per n.
    // Apps: rec5, pname, cport | rec9, pname, sport, cport, ppdname, desc;
    // then Traits: rec3, toffset, trait | rec6, trait, depth.
    const size_t app = sizeof(db_app_info), trait = sizeof(db_trait_info);
    const size_t leaked[] = {0, 0, 0, 0, app, app + 256, app + 512, app + 768, app + 1024,
                             0, trait, trait + 256, 0, trait, trait + 256};
    auto records = [&](int fail_at) {  // 0: no failure
        FailAlloc fail(fail_at);
        const size_t apps = render(db_get_app_info_by_name(&h, "a")).size();
        return apps + render(db_get_trait_info_by_appid(&h, 7)).size();
    };
    ASSERT_EQ(records(0), 4u);  // warms the client and the capture up
    for (int n = 1; n <= 15; ++n) {
        SCOPED_TRACE(n);
        clear();
        {
            Unreported measured_below;
            EXPECT_EQ(records(n), 2u);
        }
        EXPECT_EQ(texts(3), Strings(n == 1 || n == 4 || n == 10 || n == 13, "get memery db_app_info faild"));
        EXPECT_EQ(leaked_bytes([&] { records(n); }), kSafe ? 0 : static_cast<long>(leaked[n - 1]));
    }
    EXPECT_EQ(records(16), 4u);
}

// ---- Asset properties ----

TEST_F(InspectionTest, AssetPropertiesByAddress) {
    exec("insert into Assets (ipAddress, macAddress) values ('10.0.0.5', 'aa:bb'), ('10.0.0.6', 'aa:bb')");  // 1, 2
    exec("insert into AssetProperties (assetId, assetPropertyType) values (1, 1)");
    EXPECT_EQ((Ints{set_ipmac_asset_status(&h, "10.0.0.5", "aa:bb", 99, 1, 7),
                    set_ipmac_asset_status(&h, "10.0.0.5", "aa:bb", 0, 4, 7),  // lacks type 4: no row touched
                    set_ipmac_asset_status(&h, "10.0.0.9", "aa:bb", 1, 1, 8)}), (Ints{0, 0, -1}));
    const std::string pair = "SELECT assetId from Assets WHERE ipAddress= '10.0.0.5' AND macAddress = 'aa:bb';",
                      upd = "UPDATE AssetProperties SET assetPropertyIntValue=7, assetPropertyStatus=0 WHERE assetId=1";
    EXPECT_EQ(take(), (Strings{pair, upd + " AND assetPropertyType=1;", pair, upd + " AND assetPropertyType=4;",
                               "SELECT assetId from Assets WHERE ipAddress= '10.0.0.9' AND macAddress = 'aa:bb';"}));

    EXPECT_EQ((Ints{set_ipmac_asset_info(&h, "10.0.0.6", "aa:bb", 0, 2, 1, 30),
                    set_ipmac_asset_info(&h, nullptr, "aa:bb", 0, 3, 0, 40),  // the first of the two
                    set_ipmac_asset_info(&h, "10.0.0.6", nullptr, 0, 5, 1, 50),
                    set_ipmac_asset_info(&h, "10.9.9.9", nullptr, 0, 6, 1, 60)}),  // unknown: nothing inserted
              Ints(4, 0));
    const std::string insert =
        "insert into AssetProperties(assetId,assetPropertyType,assetPropertyStatus,assetPropertyIntValue) VALUES (";
    EXPECT_EQ(take(), (Strings{"select assetId from Assets where macAddress = 'aa:bb' and ipAddress = '10.0.0.6'",
                               insert + "2,2,1,30);", "select assetId from Assets where macAddress = 'aa:bb'",
                               insert + "1,3,0,40);", "select assetId from Assets where ipAddress = '10.0.0.6'",
                               insert + "2,5,1,50);", "select assetId from Assets where ipAddress = '10.9.9.9'"}));
    fail_fetch_at(1);  // logged; nothing inserted, and still 0
    EXPECT_EQ(set_ipmac_asset_info(&h, "10.0.0.6", nullptr, 0, 6, 1, 60), 0);
    EXPECT_EQ(texts(3), Strings{kFetch});
    EXPECT_EQ(take().size(), 1u);
}

TEST_F(InspectionTest, ClearingPropertiesAndArrayGetters) {
    const std::string ip200(200, '1');
    exec("insert into Assets (ipAddress, macAddress, securityAreaName) values ('10.0.0.5', 'aa:01', 'lan'), ('" +
         ip200 + "', 'aa:02', 'dmz')");
    exec("insert into AssetProperties (assetId, assetPropertyType) values (5, 1), (5, 2), (1, 1), (7, 1)");
    EXPECT_EQ((Ints{clear_asset_info(&h, "10.0.0.5", "aa:01", 5), clear_asset_info(&h, nullptr, "aa:01", 0)}),
              Ints(2, 0));  // 5: by id
    EXPECT_EQ(take(), (Strings{"delete from AssetProperties where assetId = 5",
                               "select assetId from Assets where macAddress = 'aa:01'",
                               "delete from AssetProperties where assetId = 1"}));

    // Not found: the look-up runs a second time and its status is the result;
    // the handle stays usable, also when the re-run look-up has rows.
    const std::string both = "select assetId from Assets where macAddress = 'aa:99' and ipAddress = '10.0.0.5'";
    const std::string byip = "select assetId from Assets where ipAddress = '10.0.0.5'";
    fail_fetch_at(1);  // the second call's: the first finds no row
    EXPECT_EQ((Ints{clear_asset_info(&h, "10.0.0.5", "aa:99", -1), clear_asset_info(&h, "10.0.0.5", nullptr, 0)}),
              Ints(2, 0));
    EXPECT_EQ(texts(3), Strings{kFetch});
    char mac[64] = "";
    EXPECT_EQ(get_mac_by_ip(&h, "10.0.0.5", mac), 0);
    EXPECT_STREQ(mac, "aa:01");
    EXPECT_EQ(take(), (Strings{both, both, byip, byip, "SELECT macAddress from Assets where ipAddress='10.0.0.5';"}));
    fail_fetch_at(1);
    EXPECT_EQ((Ints{get_mac_by_ip(&h, "10.0.0.5", mac), get_mac_by_ip(&h, "10.1.1.1", mac),
                    clear_asset_info(&h, nullptr, nullptr, 0), set_ipmac_asset_info(&h, nullptr, nullptr, 0, 6, 1, 6)}),
              Ints(4, -1));
    EXPECT_EQ(texts(3), Strings(2, "input information error,please input again!\n"));  // no look-up logs
    EXPECT_EQ(take().size(), 2u);

    exec("insert into AssetProperties (assetId, assetPropertyType) values (1, 3), (2, 3), (1, 4)");
    exec("insert into SecurityAreas (securityAreaId, name, enable) values (1, 'lan', 1), (2, 'dmz', 0)");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1,'eth1'),(1,'eth2'),(2,'eth3')");
    // -1 stores nothing: no row (an empty type, a disabled zone).
    asset_info_t* list = nullptr;
    asset_intface_t* ifs = nullptr;
    EXPECT_EQ(get_ipmac_asset_info(&h, 8, &list) + get_interfaces_by_devinfo(&h, ip200.c_str(), "aa:02", &ifs), -2);
    EXPECT_TRUE(list == nullptr && ifs == nullptr && texts(3).empty());
    clear();
    ASSERT_EQ(get_ipmac_asset_info(&h, 3, &list), 2);
    EXPECT_EQ((Set{std::string(list[0].ipAddress) + "/" + list[0].macAddress,
                   std::string(list[1].ipAddress) + "/" + list[1].macAddress}),
              (Set{"10.0.0.5/aa:01", ip200.substr(0, 127) + "/aa:02"}));  // cut, terminated
    ASSERT_EQ(get_interfaces_by_devinfo(&h, "10.0.0.5", "aa:01", &ifs), 2);
    EXPECT_EQ((Set{ifs[0].interfaceName, ifs[1].interfaceName}), (Set{"eth1", "eth2"}));
    EXPECT_EQ((Ints{ipmac_asset_free(&h, list), devinfo_interfaces_free(&h, ifs)}), Ints(2, 0));
    EXPECT_EQ(take(), (Strings{"SELECT at.ipAddress, at.macAddress FROM AssetProperties ap, Assets at WHERE "
                               "ap.assetPropertyType=3 AND at.assetId=ap.assetId;",
                               "SELECT sf.interfaceName from Assets at, SecurityAreas sa, SecurityAreaInterfaces sf "
                               "WHERE at.ipAddress='10.0.0.5' AND at.macAddress='aa:01' AND "
                               "at.securityAreaName=sa.name AND sa.enable=1 AND "
                               "sa.securityAreaId=sf.securityAreaId;"}));
    // The array's allocation failing: none, nothing left behind.
    EXPECT_EQ(leaked_bytes([&] { FailAlloc fail(1); EXPECT_EQ(get_ipmac_asset_info(&h, 3, &list), -1); }), 0);
}

// ---- Session controls ----

TEST_F(InspectionTest, SessionControlsFindOrCreate) {
    EXPECT_EQ(insertSessionControls(&h, 10, 20, "1.1.1.1", "2.2.2.2", 6, "http", 1, 0), 1);  // the new row's id
    const std::string check = "select sessionControlId from SessionControls             where sourceIp = '1.1.1.1' &&            targetIp = '2.2.2.2' &&            sessionType = 6 &&            serviceApp = 'http';";
    EXPECT_EQ(insertSessionControls(&h, 99, 0, "1.1.1.1", "2.2.2.2", 6, "http", 0, 1), 1);  // found, not changed
    EXPECT_EQ(texts(3), Strings{"Data exist!\n"});
    EXPECT_EQ(take(), (Strings{check, "insert into SessionControls(frequencyUpperLimit,            totalUpperLimit,                sourceIp,                targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES(10,20,'1.1.1.1','2.2.2.2',6,'http',1,0);",
                               "select sessionControlId from SessionControls                 where frequencyUpperLimit = 10 &&                totalUpperLimit = 20 &&                sourceIp = '1.1.1.1' &&                targetIp = '2.2.2.2' &&                sessionType = 6 &&                serviceApp = 'http' &&                enableLog  = 1 &&                enableUpperLimitWarn = 0;", check}));

    // The variant follows the nonzero limits (a negative one counts).
    EXPECT_EQ((Ints{insertSessionControls(&h, 0, 30, "a", "b", 1, "dns", 0, 0),
                    insertSessionControls(&h, -5, 0, "a", "b", 2, "dns", 0, 0),
                    insertSessionControls(&h, 0, 0, "a", "b", 3, "dns", 1, 1)}), (Ints{2, 3, 4}));
    const Strings s = take();
    EXPECT_EQ(Strings({s.at(1), s.at(2), s.at(4), s.at(5), s.at(7), s.at(8)}),
              (Strings{"insert into SessionControls(totalUpperLimit,            sourceIp,                targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES(30,'a','b',1,'dns',0,0);", "select sessionControlId from SessionControls                 where totalUpperLimit = 30 &&                sourceIp = 'a' &&                targetIp = 'b' &&                sessionType = 1 &&                serviceApp = 'dns' &&                enableLog  = 0 &&                enableUpperLimitWarn = 0;",
                       "insert into SessionControls(frequencyUpperLimit,            sourceIp,                targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES(-5,'a','b',2,'dns',0,0);", "select sessionControlId from SessionControls                 where frequencyUpperLimit = -5 &&                sourceIp = 'a' &&                targetIp = 'b' &&                sessionType = 2 &&                serviceApp = 'dns' &&                enableLog  = 0 &&                enableUpperLimitWarn = 0;",
                       "insert into SessionControls(sourceIp,            targetIp,                sessionType,                serviceApp,                enableLog,                enableUpperLimitWarn) VALUES('a','b',3,'dns',1,1);", "select sessionControlId from SessionControls                 where sourceIp = 'a' &&                targetIp = 'b' &&                sessionType = 3 &&                serviceApp = 'dns' &&                enableLog  = 1 &&                enableUpperLimitWarn = 1;"}));
    fail_fetch_at(1);
    EXPECT_EQ(insertSessionControls(&h, 0, 0, "a", "b", 3, "dns", 1, 1), -1);
    EXPECT_EQ(texts(3), (Strings{"Data exist!\n", kFetch}));
}

// Both limits 0: only the switches are set. The identifier given is the result.
TEST_F(InspectionTest, SessionControlUpdateAndDelete) {
    EXPECT_EQ((Ints{updateSessionControls(&h, 4, 0, 0, 1, 1), updateSessionControls(&h, 4, 0, 10, 0, 1),
                    updateSessionControls(&h, 77, 1, 1, 1, 1), deleteSessionControls(&h, 77)}), (Ints{4, 4, 77, 0}));
    EXPECT_EQ(take(), (Strings{"update SessionControls            set enableLog = 1,            enableUpperLimitWarn = 1            where sessionControlId = 4;", "update SessionControls                set frequencyUpperLimit = 0,                totalUpperLimit = 10,                enableLog = 0,                enableUpperLimitWarn = 1                where sessionControlId = 4;", "update SessionControls                set frequencyUpperLimit = 1,                totalUpperLimit = 1,                enableLog = 1,                enableUpperLimitWarn = 1                where sessionControlId = 77;",
                               "delete from SessionControls where             sessionControlId = 77;"}));
}

// ---- Whitelist references ----

TEST_F(InspectionTest, WhitelistReferences) {
    EXPECT_EQ((Ints{insertPolicyToDpiWhitelist(&h, "sig1", "12", 3), insertPolicyToDpiWhitelist(&h, "sig2", "web", 3),
                    insertPolicyToDpiWhitelist(&h, "sig3", "12", 4), getPolicyToDpiWhitelistPolicyNum(&h, "web")}),
              Ints(4, 0));
    EXPECT_EQ(texts(7).back(), "15\n");  // the sum it logs: the names taken as numbers and the counts, 12 + 2 + 0 + 1
    // The first row only; "web" counts as 0.
    EXPECT_EQ((Ints{selectPolicyToDpiWhitelistBySid(&h, 3), selectPolicyToDpiWhitelistById(&h, 2),
                    selectPolicyToDpiWhitelistById(&h, 9)}), (Ints{12, 0, -1}));
    EXPECT_TRUE(logged(7, "12\t\n") && logged(7, "web\t\n"));
    EXPECT_EQ(texts(3), Strings{kEmpty});  // the missing id
    const std::string insert = "insert into PolicyToDpiWhitelist (signame,whitelist,sid) VALUES(";
    EXPECT_EQ(take(), (Strings{insert + "'sig1','12',3);", insert + "'sig2','web',3);", insert + "'sig3','12',4);",
                               "SELECT whitelist,count(*) as count FROM PolicyToDpiWhitelist group by whitelist",
                               "select whitelist from PolicyToDpiWhitelist where sid= 3",
                               "select whitelist from PolicyToDpiWhitelist where id= 2",
                               "select whitelist from PolicyToDpiWhitelist where id= 9"}));
    fail_fetch_at(1);
    EXPECT_EQ(selectPolicyToDpiWhitelistBySid(&h, 4), -1);
    EXPECT_EQ(texts(3), Strings{kFetch});
    clear();
    EXPECT_EQ((Ints{deletePolicyToDpiWhitelistSid(&h, 3), deletePolicyToDpiWhitelistAll(&h)}), Ints(2, 0));
    EXPECT_EQ(take(), (Strings{"delete from PolicyToDpiWhitelist where sid = 3", "delete from PolicyToDpiWhitelist"}));
}

// ---- ARP-spoof and anti-attack switches ----

TEST_F(InspectionTest, ArpSpoofAndAntiAttackSwitchesAndRules) {
    exec("insert into DpiSubscriptions values (1, 0), (2, 5)");
    EXPECT_EQ((Ints{set_arpspoof_status(&h, 1, 3), set_arpspoof_status(&h, 9, 1), get_arpspoof_status(&h, 1),
                    get_arpspoof_status(&h, 9)}), (Ints{0, 0, 3, -1}));
    EXPECT_TRUE(texts(3).empty());  // an unknown type is not logged
    EXPECT_EQ(take(), (Strings{"UPDATE DpiSubscriptions SET subscriptionStatus = 3 WHERE subscriptionType = 1;",
                               "UPDATE DpiSubscriptions SET subscriptionStatus = 1 WHERE subscriptionType = 9;",
                               "SELECT subscriptionStatus from DpiSubscriptions where subscriptionType = 1;",
                               "SELECT subscriptionStatus from DpiSubscriptions where subscriptionType = 9;"}));

    exec("insert into AntiAttacks values (3, 1, 0, 0, 100), (1, 1, 0, 1, 200), (7, 2, 1, 1, 300)");
    attack_rule_t rules[3];
    memset(rules, 0x5a, sizeof rules);
    EXPECT_EQ((Ints{get_defend_attack_rules(&h, 1, rules), get_defend_attack_rules(&h, 5, rules + 2)}), (Ints{2, 0}));
    EXPECT_EQ(texts(3), Strings{kEmpty});
    // Element by element in the rows' key order; the last untouched.
    EXPECT_EQ((Ints{rules[0].attackNameId, rules[0].enable, rules[0].threshold, rules[1].attackNameId, rules[1].enable,
                    rules[1].threshold, rules[2].attackNameId}), (Ints{1, 1, 200, 3, 0, 100, 0x5a5a5a5a}));
    clear();
    EXPECT_EQ((Ints{set_defend_switch_status(&h, 1, 1), set_defend_switch_by_nameId(&h, 3, 1, 500),
                    get_defend_switch_status(&h, 1), get_defend_switch_status(&h, 5)}), (Ints{0, 0, 1, -1}));
    EXPECT_TRUE(logged(7, "1\t\n"));
    EXPECT_EQ(texts(3), Strings{kEmpty});
    EXPECT_EQ(take(), (Strings{"UPDATE AntiAttacks SET switch = 1 WHERE attackType = 1",
                               "UPDATE AntiAttacks SET enable = 1,attackValue = 500 WHERE attackNameId =3",
                               "SELECT switch from AntiAttacks where attackType = 1",
                               "SELECT switch from AntiAttacks where attackType = 5"}));
    // A negative type, status or identifier, or no rule array: refused, nothing sent.
    EXPECT_EQ((Ints{set_arpspoof_status(&h, -1, 0), set_arpspoof_status(&h, 0, -1), get_arpspoof_status(&h, -1),
                    get_defend_switch_status(&h, -1), set_defend_switch_status(&h, -1, 0),
                    set_defend_switch_by_nameId(&h, -1, 0, 0), get_defend_attack_rules(&h, -1, rules),
                    get_defend_attack_rules(&h, 1, nullptr)}), Ints(8, -1));
    EXPECT_TRUE(sent().empty());
}

}  // namespace
