// Services and their port rules, service look-up by name, static routes and
// control policies, against the private server.
#include <string.h>

#include <string>
#include <vector>

#include "harness.h"

using namespace testbed;
using Texts = std::vector<std::string>;

namespace {

const char* const kEmpty = "mysql_num_rows(), data is empty or error!";
const char* const kFetch = "mysql_fetch_row() exec error!";

class ServicesTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        truncate({"Servers", "ServerRules", "RouteDatas", "CPolicies"});
        clear();
    }

    // A user service with rules given as (maxsrc, minsrc, maxdst, mindst).
    void add_service(const char* name, const std::vector<std::vector<const char*>>& rules) {
        ASSERT_EQ(insertServersName(&h, const_cast<char*>(name), const_cast<char*>("d")), 0);
        for (const auto& r : rules) {
            ASSERT_EQ(setServerRules(&h, const_cast<char*>(name), 6, const_cast<char*>(r[0]),
                                     const_cast<char*>(r[1]), const_cast<char*>(r[2]), const_cast<char*>(r[3])),
                      0);
        }
        clear();
    }
};

char* s(const char* text) { return const_cast<char*>(text); }

}  // namespace

// ---- Service objects and port rules ----

TEST_F(ServicesTest, ServiceRowsAndRulesUseTheirExactStatements) {
    EXPECT_EQ(insertServersName(&h, s("web"), s("web ports")), 0);
    EXPECT_EQ(updateServersName(&h, s("web"), s("ports 80")), 0);
    EXPECT_EQ(sent(), (Texts{"insert into Servers(name, description) VALUES('web','web ports');",
                             "update Servers set description = 'ports 80' where name = 'web';"}));
    EXPECT_EQ(texts(3), (Texts{"mysql cmd: insert into Servers(name, description) VALUES('web','web ports');\n",
                               "mysql cmd: update Servers set description = 'ports 80' where name = 'web';\n"}));
    const std::string id = *value("select serverId from Servers where name = 'web'");

    clear();
    EXPECT_EQ(checkServersByName(&h, s("web")), 1);
    EXPECT_EQ(checkServersByName(&h, s("nope")), 0);
    EXPECT_EQ(texts(3), (Texts{"checkServersByName return: 1\n", "checkServersByName return: 0\n"}));
    EXPECT_EQ(sent()[0], "select * from Servers where name = 'web';");

    clear();
    EXPECT_EQ(setServerRules(&h, s("web"), 6, s("65535"), s("1024"), s("80"), s("80")), 0);
    EXPECT_EQ(setICMPServerRules(&h, s("web"), 1), 0);
    const std::string look = "select serverId from Servers where name= 'web'";
    EXPECT_EQ(sent(), (Texts{look,
                             "insert into ServerRules(serverId,type,maxsrcport,minsrcport,        maxdstport,"
                             "mindstport) VALUES(" + id + ", 6, '65535', '1024','80','80');",
                             look, "insert into ServerRules(serverId,type)             VALUES(" + id + ",1);"}));
    EXPECT_EQ(rows("select type, maxsrcport, minsrcport, maxdstport, mindstport from ServerRules order by serverRuleId"),
              (std::vector<Row>{{"6", "65535", "1024", "80", "80"}, {"1", std::nullopt, std::nullopt, std::nullopt, std::nullopt}}));

    clear();
    EXPECT_EQ(deleteServerRules(&h, s("web")), 0);
    EXPECT_EQ(sent(), (Texts{look, "delete from ServerRules where serverId = " + id}));
    EXPECT_EQ(count("ServerRules"), 0);

    // Rules by the first match's identifier, then every row of the name.
    ASSERT_EQ(insertServersName(&h, s("web"), s("twin")), 0);
    ASSERT_EQ(setServerRules(&h, s("web"), 17, s("1"), s("1"), s("1"), s("1")), 0);
    EXPECT_EQ(*value("select serverId from ServerRules"), id);
    clear();
    EXPECT_EQ(deleteServersByName(&h, s("web")), 0);
    EXPECT_EQ(sent(), (Texts{look, "delete from ServerRules where serverId = " + id, "delete from Servers where name = 'web'"}));
    EXPECT_EQ(count("Servers") + count("ServerRules"), 0);
}

TEST_F(ServicesTest, RuleFunctionsRefuseUnknownServicesAndBadArguments) {
    EXPECT_EQ(setServerRules(&h, s("ghost"), 6, s("1"), s("1"), s("1"), s("1")), -1);
    EXPECT_EQ(setICMPServerRules(&h, s("ghost"), 1), -1);
    EXPECT_EQ(deleteServerRules(&h, s("ghost")), -1);
    EXPECT_EQ(deleteServersByName(&h, s("ghost")), -1);
    EXPECT_EQ(sent().size(), 4u);  // the look-ups only
    EXPECT_EQ(texts(3), (Texts(4, kEmpty)));

    add_service("web", {});
    fail_fetch_at(1);
    EXPECT_EQ(setServerRules(&h, s("web"), 6, s("1"), s("1"), s("1"), s("1")), -1);
    EXPECT_EQ(texts(3), (Texts{kFetch}));
    EXPECT_EQ(count("ServerRules"), 0);

    clear();
    EXPECT_EQ(checkServersByName(&h, nullptr), -1);
    EXPECT_TRUE(sent().empty());
    // The handle is left to the statement layer.
    EXPECT_EQ(checkServersByName(nullptr, s("web")), -1);
    EXPECT_TRUE(logged(7, "Invalid param\n"));
}

TEST_F(ServicesTest, DumpsLogEveryCellAtErrorPriority) {
    add_service("web", {});
    exec("update Servers set description = NULL");
    const std::string id = *value("select serverId from Servers");
    EXPECT_EQ(util_db_query_commonServers(&h), 0);
    EXPECT_EQ(sent(), (Texts{"select * from Servers"}));
    EXPECT_EQ(texts(3), (Texts{"The total rows is: 1\n", "The total fields is: 3\n", id + "\t", "web\t", "(null)\t", "\n"}));
    clear();
    EXPECT_EQ(util_db_query_commonServerRules(&h), 0);
    EXPECT_EQ(sent(), (Texts{"select * from ServerRules"}));
    EXPECT_EQ(texts(3), (Texts{"The total rows is: 0\n", "The total fields is: 13\n"}));
    EXPECT_EQ(util_db_query_commonServers(nullptr), -1);
}

// ---- Service look-up by name ----

TEST_F(ServicesTest, LookupPrefersPredefinedAndKeepsRowOrder) {
    add_service("HTTP", {{"9", "9", "9", "9"}});
    db_predefsrv_info* list = db_get_srv_info_by_name(&h, s("HTTP"));
    ASSERT_NE(list, nullptr);
    EXPECT_STREQ(list->pname, "HTTP");
    EXPECT_EQ((std::vector<int>{list->minsport, list->maxsport, list->mindport, list->maxdport}),
              (std::vector<int>{0, 65535, 80, 80}));
    EXPECT_EQ(list->next, nullptr);
    EXPECT_EQ(db_free_predefsrv_info(list), 0);
    EXPECT_EQ(sent().size(), 1u);

    add_service("app", {{"10", "1", "20", "2"}, {"30", "3", "40", "4"}});
    exec("insert into ServerRules (serverId, type) select serverId, 1 from Servers where name = 'app'");
    clear();
    list = db_get_srv_info_by_name(&h, s("app"));
    EXPECT_EQ(sent(), (Texts{"SELECT * FROM PredefineServerRules, PredefineServers where PredefineServerRules.serverId"
                             " = PredefineServers.serverId and PredefineServers.name = 'app';",
                             "SELECT * FROM ServerRules, Servers where ServerRules.serverId = Servers.serverId and "
                             "Servers.name = 'app';"}));
    std::vector<std::vector<int>> got;
    for (db_predefsrv_info* n = list; n != nullptr; n = n->next) {
        EXPECT_STREQ(n->pname, "app");
        got.push_back({n->minsport, n->maxsport, n->mindport, n->maxdport});
    }
    EXPECT_EQ(got, (std::vector<std::vector<int>>{{1, 10, 2, 20}, {3, 30, 4, 40}, {0, 0, 0, 0}}));
    EXPECT_EQ(db_free_predefsrv_info(list), 0);

    EXPECT_EQ(db_get_srv_info_by_name(&h, s("ghost")), nullptr);
    EXPECT_EQ(db_get_srv_info_by_name(nullptr, s("app")), nullptr);
    EXPECT_EQ(db_free_predefsrv_info(nullptr), -1);
    EXPECT_TRUE(texts(3).empty());
}

// Allocations: node 1, its name, node 2, its name, node 3, its name. A failed
// name past the first row loses its unlinked node (see lsan.supp).
TEST_F(ServicesTest, LookupFailsCleanlyAtEveryAllocation) {
    add_service("app", {{"1", "1", "1", "1"}, {"2", "2", "2", "2"}, {"3", "3", "3", "3"}});
    for (int n = 1; n <= 7; ++n) {
        SCOPED_TRACE(n);
        clear();
        db_predefsrv_info* list;
        {
            FailAlloc fail(n);
            list = db_get_srv_info_by_name(&h, s("app"));
        }
        if (n == 7) {
            ASSERT_NE(list, nullptr);
            EXPECT_EQ(list->next->next->maxdport, 3);
            db_free_predefsrv_info(list);
            break;
        }
        EXPECT_EQ(list, nullptr);
        EXPECT_EQ(texts(3), n % 2 == 1 ? Texts{"get memery db_predefsrv_info faild"} : Texts{});
    }
}

// ---- Static routes ----

TEST_F(ServicesTest, RouteInsertNamesOnlyTheGivenColumns) {
    struct Case {
        const char* dest;
        const char* gw;
        const char* dev;
        int distance, priority;
        const char* sql;
    };
    const Case cases[] = {
        {"10.0.0.0/8", "192.168.1.1", nullptr, 0, 5, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName,priority) VALUES('10.0.0.0/8','192.168.1.1','any','5');"},
        {"0.0.0.0/0", nullptr, "eth1", 2, 0, "insert into RouteDatas (destIpMask,outInterfaceName,manageScope) VALUES('0.0.0.0/0','eth1','2');"},
        {"10.0.0.0/8", "192.168.1.1", nullptr, 0, 0, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName) VALUES('10.0.0.0/8','192.168.1.1','any');"},
        {"10.0.0.0/8", "192.168.1.1", nullptr, 2, 0, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName,manageScope) VALUES('10.0.0.0/8','192.168.1.1','any','2');"},
        {"10.0.0.0/8", "192.168.1.1", nullptr, 2, 5, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName,manageScope,priority) VALUES('10.0.0.0/8','192.168.1.1','any','2','5');"},
        {"10.0.0.0/8", nullptr, "eth1", 0, 0, "insert into RouteDatas (destIpMask,outInterfaceName) VALUES('10.0.0.0/8','eth1');"},
        {"10.0.0.0/8", nullptr, "eth1", 0, 5, "insert into RouteDatas (destIpMask,outInterfaceName,priority) VALUES('10.0.0.0/8','eth1','5');"},
        {"10.0.0.0/8", nullptr, "eth1", 2, 5, "insert into RouteDatas (destIpMask,outInterfaceName,manageScope,priority) VALUES('10.0.0.0/8','eth1','2','5');"},
        {"10.0.0.0/8", "192.168.1.1", "eth1", 0, 0, "insert into RouteDatas (destIpMask,outInterfaceName) VALUES('10.0.0.0/8','eth1');"},
        {"10.0.0.0/8", "192.168.1.1", "eth1", 0, 5, "insert into RouteDatas (destIpMask,outInterfaceName,priority) VALUES('10.0.0.0/8','eth1','5');"},
        {"10.0.0.0/8", "192.168.1.1", "eth1", 2, 0, "insert into RouteDatas (destIpMask,outInterfaceName,manageScope) VALUES('10.0.0.0/8','eth1','2');"},
        {"10.0.0.0/8", "192.168.1.1", "eth1", 2, 5, "insert into RouteDatas (destIpMask,outInterfaceName,manageScope,priority) VALUES('10.0.0.0/8','eth1','2','5');"},
    };
    for (const Case& c : cases) {
        clear();
        EXPECT_EQ(insertRouteDatasgateInfo(&h, c.dest, c.gw, c.dev, c.distance, c.priority), 0);
        EXPECT_EQ(sent(), (Texts{c.sql}));
    }
    EXPECT_EQ(count("RouteDatas"), 12);
    EXPECT_EQ(count("RouteDatas", "gateWayNextJump is not null"), 4);  // both given: the gateway is dropped
    // An over-long piece fills the buffer; nothing is appended after it.
    clear();
    const std::string head = "insert into RouteDatas (destIpMask,outInterfaceName) VALUES('";
    EXPECT_EQ(insertRouteDatasgateInfo(&h, std::string(1100, '1').c_str(), nullptr, "eth1", 0, 0), -1);
    EXPECT_EQ(sent(), (Texts{head + std::string(1023 - head.size(), '1')}));

    clear();
    EXPECT_EQ(insertRouteDatasgateInfo(&h, "10.0.0.0/8", nullptr, nullptr, 1, 1), -1);  // neither: refused
    EXPECT_TRUE(sent().empty());
}

TEST_F(ServicesTest, RouteDeleteMatchesGatewayOrInterface) {
    for (const char* dev : {"eth1", "eth2"}) {
        ASSERT_EQ(insertRouteDatasgateInfo(&h, "10.0.0.0/8", nullptr, dev, 0, 0), 0);
    }
    ASSERT_EQ(insertRouteDatasgateInfo(&h, "10.0.0.0/8", "1.1.1.1", nullptr, 0, 0), 0);
    ASSERT_EQ(insertRouteDatasgateInfo(&h, "10.0.0.0/8", "2.2.2.2", nullptr, 0, 0), 0);
    clear();
    EXPECT_EQ(deleteRouteDatasgateInfo(&h, "10.0.0.0/8", nullptr, "eth1"), 0);
    EXPECT_EQ(deleteRouteDatasgateInfo(&h, "10.0.0.0/8", "1.1.1.1", nullptr), 0);
    EXPECT_EQ(deleteRouteDatasgateInfo(&h, "10.0.0.0/8", "2.2.2.2", "eth2"), 0);
    EXPECT_EQ(sent(), (Texts{"delete from RouteDatas where destIpMask = '10.0.0.0/8' and (outInterfaceName = 'eth1')",
                             "delete from RouteDatas where destIpMask = '10.0.0.0/8' and (gateWayNextJump = '1.1.1.1')",
                             "delete from RouteDatas where destIpMask = '10.0.0.0/8' and (gateWayNextJump = '2.2.2.2' "
                             "or outInterfaceName = 'eth2')"}));
    EXPECT_EQ(count("RouteDatas"), 0);
    clear();
    EXPECT_EQ(deleteRouteDatasgateInfo(&h, "10.0.0.0/8", nullptr, nullptr), -1);
    EXPECT_TRUE(sent().empty());

    for (int i = 0; i < 2; ++i) {  // empty or not, the table is emptied
        EXPECT_EQ(deleteRouteDatasAllInfo(&h), 0);
    }
    EXPECT_EQ(sent(), (Texts{"delete from RouteDatas;", "delete from RouteDatas;"}));
    EXPECT_EQ(deleteRouteDatasAllInfo(nullptr), -1);
}

TEST_F(ServicesTest, RouteReadFillsGatewayOrInterfaceAndAnswersOne) {
    exec("insert into RouteDatas values (1,'10.0.0.0/8','192.168.1.1','eth1',5,2),"
         "(2,'0.0.0.0/0',NULL,'eth2',0,0),(3,'1.0.0.0/8',NULL,NULL,0,0),"
         "(4,'" + std::string(45, '9') + "',NULL,'eth3',0,0)");
    db_route_info r;
    memset(&r, 0, sizeof r);
    r.routeId = 1;
    EXPECT_EQ(getRouteDatasgateInfoByIdx(&h, &r), 1);
    EXPECT_EQ(sent(), (Texts{"select * from RouteDatas where routeId = '1';"}));
    EXPECT_STREQ(r.destIpMask, "10.0.0.0/8");
    EXPECT_STREQ(r.gateWayNextJump, "192.168.1.1");
    EXPECT_STREQ(r.outInterfaceName, "");
    EXPECT_EQ(r.priority, 5);
    EXPECT_EQ(r.manageScope, 2);

    memset(&r, 0, sizeof r);
    r.routeId = 2;
    EXPECT_EQ(getRouteDatasgateInfoByIdx(&h, &r), 1);
    EXPECT_STREQ(r.gateWayNextJump, "");
    EXPECT_STREQ(r.outInterfaceName, "eth2");

    memset(&r, 0, sizeof r);
    r.routeId = 4;  // a full field keeps no terminator
    EXPECT_EQ(getRouteDatasgateInfoByIdx(&h, &r), 1);
    EXPECT_EQ(std::string(r.destIpMask, sizeof r.destIpMask), std::string(40, '9'));

    clear();
    for (int id : {3, 99}) {  // neither gateway nor interface; no such route
        r.routeId = id;
        EXPECT_EQ(getRouteDatasgateInfoByIdx(&h, &r), -1);
    }
    EXPECT_EQ(texts(3), (Texts{kFetch, kFetch}));
    clear();
    r.routeId = 0;
    EXPECT_EQ(getRouteDatasgateInfoByIdx(&h, &r), -1);
    EXPECT_TRUE(sent().empty());

    EXPECT_EQ(updateRouteDatasgateInfo(&h, "2.0.0.0/8", "3.3.3.3", "eth9", 7, 8, 2), 0);
    EXPECT_EQ(sent(), (Texts{"UPDATE RouteDatas SET destIpMask = '2.0.0.0/8',gateWayNextJump = '3.3.3.3',"
                             "outInterfaceName = 'eth9',priority = 7,manageScope = 8 WHERE routeId = 2"}));
    EXPECT_EQ(rows("select * from RouteDatas where routeId = 2"),
              (std::vector<Row>{{"2", "2.0.0.0/8", "3.3.3.3", "eth9", "7", "8"}}));
    EXPECT_EQ(updateRouteDatasgateInfo(&h, "2.0.0.0/8", nullptr, "eth9", 7, 8, 2), -1);
}

// ---- Control policies ----

TEST_F(ServicesTest, PolicyLookupsAndZeroCountAsFailure) {
    EXPECT_EQ(getPolicyNumBySerAPPType(&h), -1);
    EXPECT_EQ(getPolicyIdByName(&h, s("allow")), -1);
    EXPECT_EQ(sent(), (Texts{"select policyId from CPolicies where serviceAppType=1;",
                             "select policyId from CPolicies where name= 'allow';"}));
    EXPECT_EQ(texts(3), (Texts{kEmpty, kEmpty}));

    exec("insert into CPolicies values (7,'allow',1),(3,'allow',1),(9,'deny',0)");
    clear();
    EXPECT_EQ(getPolicyIdByName(&h, s("allow")), 3);  // first row returned (key order)
    EXPECT_EQ(getPolicyNumBySerAPPType(&h), 2);
    EXPECT_EQ(deletePolicyByName(&h, s("allow")), 0);
    EXPECT_EQ(deletePolicyByName(&h, s("allow")), 0);
    EXPECT_EQ(sent().back(), "delete from CPolicies where name = 'allow';");
    EXPECT_EQ(count("CPolicies"), 1);
}
