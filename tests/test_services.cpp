// Services and their port rules, service look-up by name, static routes and
// control policies, against the private server.
#include <map>

#include "harness.h"

using namespace testbed;
using Texts = std::vector<std::string>;
using Ints = std::vector<int>;

namespace {

const char* const kEmpty = "mysql_num_rows(), data is empty or error!";
const char* const kFetch = "mysql_fetch_row() exec error!";

char* s(const char* text) { return const_cast<char*>(text); }

using ServicesTest = LibraryTest;  // each test empties the tables it uses

}  // namespace

// ---- Service objects and port rules ----

TEST_F(ServicesTest, ServiceRowsRulesAndDumpsUseTheirExactStatements) {
    truncate({"Servers", "ServerRules"});
    // No such service: the look-up only. A failed fetch (the first one is web's) writes no rule.
    fail_fetch_at(1);
    EXPECT_EQ((Ints{setICMPServerRules(&h, s("ghost"), 1), deleteServersByName(&h, s("ghost")),
                    insertServersName(&h, s("web"), s("web ports")), updateServersName(&h, s("web"), s("ports 80")),
                    checkServersByName(&h, s("web")), checkServersByName(&h, s("nope")),
                    setServerRules(&h, s("web"), 6, s("1"), s("1"), s("1"), s("1"))}),
              (Ints{-1, -1, 0, 0, 1, 0, -1}));
    const std::string ghost = "select serverId from Servers where name= 'ghost'",
                      look = "select serverId from Servers where name= 'web'";
    EXPECT_EQ(sent(), (Texts{ghost, ghost, "insert into Servers(name, description) VALUES('web','web ports');",
                             "update Servers set description = 'ports 80' where name = 'web';",
                             "select * from Servers where name = 'web';", "select * from Servers where name = 'nope';",
                             look}));
    EXPECT_EQ(texts(3), (Texts{kEmpty, kEmpty,
                               "mysql cmd: insert into Servers(name, description) VALUES('web','web ports');\n",
                               "mysql cmd: update Servers set description = 'ports 80' where name = 'web';\n",
                               "checkServersByName return: 1\n", "checkServersByName return: 0\n", kFetch}));

    // Dumps log every cell at error priority.
    exec("update Servers set description = NULL");
    clear();
    EXPECT_EQ((Ints{util_db_query_commonServers(&h), util_db_query_commonServerRules(&h)}), Ints(2, 0));
    EXPECT_EQ(sent(), (Texts{"select * from Servers", "select * from ServerRules"}));
    EXPECT_EQ(texts(3), (Texts{"The total rows is: 1\n", "The total fields is: 3\n", "1\t", "web\t", "(null)\t", "\n",
                               "The total rows is: 0\n", "The total fields is: 13\n"}));

    // Rules by the first match's identifier, then every row of the name.
    exec("insert into Servers (name, description) values ('web', 'twin')");
    clear();
    EXPECT_EQ((Ints{setServerRules(&h, s("web"), 6, s("65535"), s("1024"), s("80"), s("80")),
                    deleteServerRules(&h, s("web")), setICMPServerRules(&h, s("web"), 1),
                    deleteServersByName(&h, s("web"))}),
              Ints(4, 0));
    EXPECT_EQ(sent(), (Texts{look,
                             "insert into ServerRules(serverId,type,maxsrcport,minsrcport,        maxdstport,"
                             "mindstport) VALUES(1, 6, '65535', '1024','80','80');",  // web's first row
                             look, "delete from ServerRules where serverId = 1",
                             look, "insert into ServerRules(serverId,type)             VALUES(1,1);",
                             look, "delete from ServerRules where serverId = 1",
                             "delete from Servers where name = 'web'"}));
}

// ---- Service look-up by name ----

TEST_F(ServicesTest, LookupPrefersPredefinedKeepsRowOrderAndFailsCleanly) {
    truncate({"Servers", "ServerRules"});
    exec("insert into Servers (serverId, name) values (1, 'HTTP'), (2, 'app')");
    exec("insert into ServerRules (serverId, type, maxsrcport, minsrcport, maxdstport, mindstport) values "
         "(1, 6, 9, 9, 9, 9), (2, 6, 10, 1, 20, 2), (2, 6, 30, 3, 40, 4), (2, 1, NULL, NULL, NULL, NULL)");
    // Each rule of a look-up (failing the Nth allocation) as {name, minsport, maxsport, mindport, maxdport}.
    const auto rules = [&](const char* name, int fail_at = 0) {
        FailAlloc fail(fail_at);
        db_predefsrv_info* list = db_get_srv_info_by_name(&h, s(name));
        std::vector<Texts> got;
        for (db_predefsrv_info* n = list; n != nullptr; n = n->next) {
            got.push_back({n->pname ? n->pname : "(null)", std::to_string(n->minsport), std::to_string(n->maxsport),
                           std::to_string(n->mindport), std::to_string(n->maxdport)});
        }
        EXPECT_EQ(db_free_predefsrv_info(list), list ? 0 : -1);
        return got;
    };
    EXPECT_EQ(rules("HTTP"), (std::vector<Texts>{{"HTTP", "0", "65535", "80", "80"}}));
    EXPECT_EQ(sent().size(), 1u);
    clear();
    const std::vector<Texts> app = {{"app", "1", "10", "2", "20"}, {"app", "3", "30", "4", "40"},
                                    {"app", "0", "0", "0", "0"}};
    EXPECT_EQ(rules("app"), app);
    EXPECT_EQ(sent(), (Texts{"SELECT * FROM PredefineServerRules, PredefineServers where PredefineServerRules.serverId"
                             " = PredefineServers.serverId and PredefineServers.name = 'app';",
                             "SELECT * FROM ServerRules, Servers where ServerRules.serverId = Servers.serverId and "
                             "Servers.name = 'app';"}));
    EXPECT_TRUE(rules("ghost").empty() && texts(3).empty());

    // Allocations: node 1, its name, node 2, its name, node 3, its name. A failed
    // name past the first row loses its unlinked node (freed in the safe profile).
    for (int n = 1; n <= 6; ++n) {
        clear();
        {
            Unreported measured_below;
            EXPECT_TRUE(rules("app", n).empty()) << n;
        }
        EXPECT_EQ(texts(3), n % 2 == 1 ? Texts{"get memery db_predefsrv_info faild"} : Texts{}) << n;
        const long lost = !kSafe && (n == 4 || n == 6) ? sizeof(db_predefsrv_info) : 0;
        EXPECT_EQ(leaked_bytes([&] { FailAlloc fail(n); db_get_srv_info_by_name(&h, s("app")); }), lost) << n;
    }
    EXPECT_EQ(rules("app", 7), app);
}

// ---- Static routes ----

// An insert names only the columns given; the read copies one route.
TEST_F(ServicesTest, RoutesInsertReadUpdateAndDelete) {
    truncate({"RouteDatas"});
    const struct { const char *dest, *gw, *dev; int distance, priority; const char* sql; } cases[] = {
        {"10.0.0.0/8", "192.168.1.1", nullptr, 0, 5, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName,priority) VALUES('10.0.0.0/8','192.168.1.1','any','5');"},
        {"0.0.0.0/0", nullptr, "eth1", 2, 0, "insert into RouteDatas (destIpMask,outInterfaceName,manageScope) VALUES('0.0.0.0/0','eth1','2');"},
        {"10.0.0.0/8", "192.168.1.1", nullptr, 0, 0, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName) VALUES('10.0.0.0/8','192.168.1.1','any');"},
        {"10.0.0.0/8", "192.168.1.1", nullptr, 2, 5, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName,manageScope,priority) VALUES('10.0.0.0/8','192.168.1.1','any','2','5');"},
        {"10.0.0.0/8", nullptr, "eth1", 0, 0, "insert into RouteDatas (destIpMask,outInterfaceName) VALUES('10.0.0.0/8','eth1');"},
        {"10.0.0.0/8", "192.168.1.1", "eth1", 2, 5, "insert into RouteDatas (destIpMask,outInterfaceName,manageScope,priority) VALUES('10.0.0.0/8','eth1','2','5');"},  // the gateway dropped
        {"10.0.0.0/8", nullptr, nullptr, 1, 1, nullptr},  // neither: refused
    };
    for (const auto& c : cases) {
        clear();
        EXPECT_EQ(insertRouteDatasgateInfo(&h, c.dest, c.gw, c.dev, c.distance, c.priority), c.sql ? 0 : -1);
        EXPECT_EQ(sent(), c.sql ? Texts{c.sql} : Texts{});
    }
    truncate({"RouteDatas"});
    exec("insert into RouteDatas values (1,'10.0.0.0/8','192.168.1.1','eth1',5,2),"
         "(2,'0.0.0.0/0',NULL,'eth2',0,0),(3,'1.0.0.0/8',NULL,NULL,0,0),"
         "(4,'" + std::string(45, '9') + "',NULL,'eth3',0,0),"
         "(5,'10.0.0.0/8',NULL,'eth2',0,0),(6,'10.0.0.0/8','1.1.1.1',NULL,0,0),(7,'10.0.0.0/8','2.2.2.2',NULL,0,0)");
    std::map<int, db_route_info> r;
    const auto read = [&](int id) {
        r[id] = db_route_info{};
        r[id].routeId = id;
        return getRouteDatasgateInfoByIdx(&h, &r[id]);
    };
    // Neither gateway nor interface (3), no such route (99), no identifier (0).
    EXPECT_EQ((Ints{read(1), read(2), read(4), read(3), read(99), read(0)}), (Ints{1, 1, 1, -1, -1, -1}));
    EXPECT_EQ(sent().front(), "select * from RouteDatas where routeId = '1';");
    EXPECT_EQ(sent().size(), 5u);
    EXPECT_EQ(texts(3), (Texts{kFetch, kFetch}));
    EXPECT_EQ((Texts{r[1].destIpMask, r[1].gateWayNextJump, r[1].outInterfaceName, r[2].gateWayNextJump,
                     r[2].outInterfaceName}),
              (Texts{"10.0.0.0/8", "192.168.1.1", "", "", "eth2"}));
    EXPECT_EQ((Ints{r[1].priority, r[1].manageScope}), (Ints{5, 2}));
    // A full field keeps no terminator.
    EXPECT_EQ(std::string(r[4].destIpMask, sizeof r[4].destIpMask), std::string(40, '9'));

    // Deletes match the gateway or the interface.
    clear();
    EXPECT_EQ((Ints{updateRouteDatasgateInfo(&h, "2.0.0.0/8", "3.3.3.3", "eth9", 7, 8, 2),
                    deleteRouteDatasgateInfo(&h, "10.0.0.0/8", nullptr, "eth1"),
                    deleteRouteDatasgateInfo(&h, "10.0.0.0/8", "1.1.1.1", nullptr),
                    deleteRouteDatasgateInfo(&h, "10.0.0.0/8", "2.2.2.2", "eth2"),
                    deleteRouteDatasgateInfo(&h, "10.0.0.0/8", nullptr, nullptr), deleteRouteDatasAllInfo(&h)}),
              (Ints{0, 0, 0, 0, -1, 0}));
    EXPECT_EQ(sent(), (Texts{"UPDATE RouteDatas SET destIpMask = '2.0.0.0/8',gateWayNextJump = '3.3.3.3',"
                             "outInterfaceName = 'eth9',priority = 7,manageScope = 8 WHERE routeId = 2",
                             "delete from RouteDatas where destIpMask = '10.0.0.0/8' and (outInterfaceName = 'eth1')",
                             "delete from RouteDatas where destIpMask = '10.0.0.0/8' and (gateWayNextJump = '1.1.1.1')",
                             "delete from RouteDatas where destIpMask = '10.0.0.0/8' and (gateWayNextJump = '2.2.2.2' "
                             "or outInterfaceName = 'eth2')", "delete from RouteDatas;"}));
}

// ---- Control policies ----

TEST_F(ServicesTest, PolicyLookupsAndZeroCountAsFailure) {
    truncate({"CPolicies"});
    EXPECT_EQ((Ints{getPolicyNumBySerAPPType(&h), getPolicyIdByName(&h, s("allow"))}), (Ints{-1, -1}));
    EXPECT_EQ(sent(), (Texts{"select policyId from CPolicies where serviceAppType=1;",
                             "select policyId from CPolicies where name= 'allow';"}));
    EXPECT_EQ(texts(3), (Texts{kEmpty, kEmpty}));

    exec("insert into CPolicies values (7,'allow',1),(3,'allow',1),(9,'deny',0)");
    clear();
    // The first row returned (key order).
    EXPECT_EQ((Ints{getPolicyIdByName(&h, s("allow")), getPolicyNumBySerAPPType(&h), deletePolicyByName(&h, s("x"))}),
              (Ints{3, 2, 0}));
    EXPECT_EQ(sent().back(), "delete from CPolicies where name = 'x';");
}
