// The safe profile against the private server: hostile values stored and found
// exactly as given, refused statements (too long, not one literal) never sent,
// recovery after a lost connection without a probe, time-outs against a frozen
// server, and nothing left unfreed on the paths the default profile leaks.
// In the default profile the cases that assert the safe outcome are skipped.
#include <signal.h>
#include <stdio.h>
#include <string.h>

#include <algorithm>
#include <chrono>
#include <functional>
#include <string>
#include <vector>

#include "harness.h"
#include "util-db-NetInterfaces-internal.h"

using namespace testbed;

namespace {

const std::vector<std::string> kTables = {"SecurityAreas", "SecurityAreaInterfaces", "Servers", "ServerRules",
                                          "Apps", "Traits", "NetInterfaces", "RouteDatas", "StrategyRules"};

// "@v" replaced by the value as a hex literal, for the harness's own statements.
std::string with_value(std::string sql, const std::string& v) {
    std::string lit = "X'";
    char b[3];
    for (unsigned char c : v) snprintf(b, sizeof b, "%02x", c), lit += b;
    for (size_t at; (at = sql.find("@v")) != std::string::npos;) sql.replace(at, 2, lit + "'");
    return sql;
}

char g_buf[4096];
char* W(const char* s) { return const_cast<char*>(s); }

// One path that places a value between quotes: seed rows (harness statements,
// ';'-separated; decoys named 'x' or 'ethX' beside the hostile row), the call
// with the value and its result, a check that must read 1 (NULL: none; an
// update's check is 1 only when the hostile row alone changed), and the change
// of the total row count (nothing else inserted or deleted).
struct Trip {
    const char* name;
    const char* seed;
    std::function<long(db_handle_t*, char*)> call;
    long result;
    const char* check;
    long delta;
};

long found(const char* r) { return r == g_buf && std::string(g_buf) == "hit" ? 1 : 0; }

#define CALL(expr) [](db_handle_t* h, char* v) -> long { return (long)(expr); }
#define CALL_M(expr) [=](db_handle_t* h, char* v) mutable -> long { return (long)(expr); }

std::vector<Trip> trips() {
    db_app_info app{};
    return {
        {"insertSecurityAreas", "insert into SecurityAreas (name) values ('x')", CALL(insertSecurityAreas(h, v)), 0,
         "select count(*) from SecurityAreas where binary name = @v", 1},
        {"deleteSecurityAreas", "insert into SecurityAreas (name) values ('x'),(@v)", CALL(deleteSecurityAreas(h, v)),
         0, "select count(*) from SecurityAreas where name = 'x'", -1},
        {"updateSecurityAreas", "insert into SecurityAreas (name) values ('x'),(@v)", CALL(updateSecurityAreas(h, v, 0)),
         0, "select group_concat(binary name = @v) from SecurityAreas where enable = 0", 0},
        {"select_name_by_interfacename_SA",
         "insert into SecurityAreas (securityAreaId, name) values (1, 'hit');"
         "insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'x'),(1, @v)",
         CALL(found(select_name_by_interfacename_SA(h, v, g_buf))), 1, nullptr, 0},
        {"insertServersName", "insert into Servers (name) values ('x')", CALL(insertServersName(h, v, v)), 0,
         "select count(*) from Servers where binary name = @v and binary description = @v", 1},
        // Two statements that share one refusal (columns and values).
        {"db_add_app", "", CALL_M((app.pname = app.desc = v, app.inherit = 1, db_add_app(h, &app))), 0,
         "select count(*) from Apps where binary name = @v and binary description = @v", 1},
        {"db_get_app_info_by_name", "insert into Apps (name) values ('x'),(@v)",
         CALL(([h, v] {
             db_app_info* l = db_get_app_info_by_name(h, v);
             const long n = l != nullptr && l->next == nullptr && std::string(l->pname) == v;
             return db_free_app_info(l), n;
         }())), 1, nullptr, 0},
        // Constant pieces, then the values appended.
        {"insertRouteDatasgateInfo", "", CALL(insertRouteDatasgateInfo(h, v, v, nullptr, 1, 1)), 0,
         "select count(*) from RouteDatas where binary destIpMask = @v and binary gateWayNextJump = @v", 1},
        {"setRemoteServiceStrategyRuleName", "insert into StrategyRules (strategyRuleName) values ('x'),(@v)",
         CALL(setRemoteServiceStrategyRuleName(h, v, v)), 0,
         "select group_concat(binary strategyRuleName = @v) from StrategyRules where binary ruleData = @v", 0},
        // A like pattern: % and _ in the value match only themselves.
        {"setLinkStatusNetInterfaces", "insert into NetInterfaces (interfaceName, status) values ('ethX', 0),(@v, 0)",
         CALL(setLinkStatusNetInterfaces(h, v, 1)), 0,
         "select group_concat(binary interfaceName = @v) from NetInterfaces where status = 1", 0},
    };
}

const std::vector<std::string> kHostile = {"'", "\\", "''", "%", "_", "zoné✓区", "x' or '1'='1", "tail\\"};

class SafeTest : public LibraryTest {
protected:
    static long total() {
        std::string sql = "select 0";
        for (const std::string& t : kTables) sql += " + (select count(*) from " + t + ")";
        return atol(value(sql)->c_str());
    }

    void round_trips() {
        for (const Trip& t : trips()) {
            for (const std::string& v : kHostile) {
                SCOPED_TRACE(std::string(t.name) + " with " + v);
                for (const std::string& table : kTables) exec("delete from " + table);
                const std::string seed = with_value(t.seed, v);
                for (size_t at = 0, end; at < seed.size(); at = end + 1) {
                    end = std::min(seed.find(';', at), seed.size());
                    exec(seed.substr(at, end - at));
                }
                const long before = total();
                std::string arg = v;
                g_buf[0] = '\0';
                EXPECT_EQ(t.call(&h, arg.data()), t.result);
                if (t.check != nullptr) { EXPECT_EQ(value(with_value(t.check, v)), "1"); }
                EXPECT_EQ(total(), before + t.delta);
            }
        }
    }
};

TEST_F(SafeTest, HostileValuesAreStoredAndFoundExactly) {
    if (!kSafe) GTEST_SKIP() << "the default profile sends values as they are";
    const std::string flush = *value("select @@global.innodb_flush_log_at_trx_commit");
    exec("set global innodb_flush_log_at_trx_commit = 0");  // many small commits
    round_trips();
    // The same with a server session that takes backslashes literally.
    const std::string mode = *value("select @@global.sql_mode");
    exec("set global sql_mode = 'NO_BACKSLASH_ESCAPES'");
    util_db_disconnect(&h);
    ASSERT_EQ(util_db_connect(&h), &h);
    round_trips();
    exec("set global sql_mode = '" + mode + "'");
    exec("set global innodb_flush_log_at_trx_commit = " + flush);
}

// Too long as given, or only once its quotes are escaped; a formatted
// statement, and one whose last constant piece is what no longer fits.
TEST_F(SafeTest, StatementTooLongIsNotSent) {
    if (!kSafe) GTEST_SKIP() << "the default profile sends the statement cut";
    const std::function<int(char*)> calls[] = {
        [this](char* v) { return deleteAssetByName(&h, v); },
        [this](char* v) { return insertRouteDatasgateInfo(&h, v, "g", nullptr, 0, 0); }};
    for (const auto& call : calls) {
        for (std::string v : {std::string(990, 'n'), std::string(600, '\'')}) {
            clear();
            EXPECT_EQ(call(v.data()), -1);
            EXPECT_TRUE(sent().empty());
            EXPECT_EQ(texts(3), (std::vector<std::string>{"Statement too long for its buffer, not sent\n"}));
        }
    }
}

TEST_F(SafeTest, UnquotedValuesMustBeOneLiteralOrName) {
    truncate({"Traits"});
    exec("insert into Traits (appId, toffset) values (4, 'old'), (5, 'old')");
    struct {
        const char* value;
        bool literal;
    } cases[] = {{"12", true}, {"-3.5e2", true}, {"'abc'", true}, {"'it''s'", true}, {"''", true},
                 {"1 or 1=1", false}, {"'a' or '1'='1'", false}, {"'abc", false}, {"abc", false}, {"", false},
                 {"1; drop table Traits", false}, {"'a''", false}, {"'a'b'", false}};
    for (const auto& c : cases) {
        SCOPED_TRACE(c.value);
        clear();
        db_trait_info t{};
        t.appid = 4, t.toffset = W(c.value);
        const int r = db_update_traitby_appid(&h, &t);
        if (!kSafe) continue;
        EXPECT_EQ(r, c.literal ? 0 : -1);
        EXPECT_EQ(sent().size(), c.literal ? 1u : 0u);
        if (!c.literal) {
            EXPECT_TRUE(logged(3, std::string("Value is not one SQL literal, not sent: ") + c.value + "\n"));
        }
    }
    EXPECT_EQ(count("Traits", "appId = 5 and toffset = 'old'"), 1);
    if (!kSafe) return;
    // A backslash escape is the server's rule unless it runs with NO_BACKSLASH_ESCAPES.
    db_trait_info t{};
    t.appid = 4, t.toffset = W("'a\\'");
    EXPECT_EQ(db_update_traitby_appid(&h, &t), -1);
    t.toffset = W("'a\\'b'");
    EXPECT_EQ(db_update_traitby_appid(&h, &t), 0);
    EXPECT_EQ(*value("select toffset from Traits where appId = 4"), "a'b");
    // The access-service setter names its column: a plain name only.
    truncate({"NetInterfaces"});
    exec("insert into NetInterfaces (interfaceName) values ('eth1'), ('eth2')");
    for (const char* column : {"ping", "ping = 1, snmp", "snmp=1 where 1=1 or ''", "1ping", ""}) {
        SCOPED_TRACE(column);
        clear();
        const bool plain = strcmp(column, "ping") == 0;
        EXPECT_EQ(setAccessModeNetInterfaces(&h, column, 1, W("eth1")), plain ? 0 : -1);
        EXPECT_EQ(sent().size(), plain ? 1u : 0u);
        EXPECT_EQ(logged(3, std::string("Value is not one SQL identifier, not sent: ") + column + "\n"), !plain);
    }
    EXPECT_EQ(count("NetInterfaces", "ping = 1"), 1);
    EXPECT_EQ(count("NetInterfaces", "snmp = 1"), 0);
}

// A call that succeeds only on a live connection: 0, or -1.
int probe(db_handle_t* h) { return checkServersByName(h, W("probe")) >= 0 ? 0 : -1; }

TEST_F(SafeTest, LostConnectionCostsAtMostOneCall) {
    if (!kSafe) GTEST_SKIP() << "the default profile needs util_db_chkconnect to recover";
    kill_connections();
    const int first = probe(&h);
    EXPECT_EQ(probe(&h), 0) << "first call after the kill: " << first;

    server_stop();
    server_start();
    const int after = probe(&h);
    EXPECT_EQ(probe(&h), 0) << "first call after the restart: " << after;
    // Never sent twice: each call sent its statement once.
    EXPECT_EQ(sent().size(), 4u);
}

TEST_F(SafeTest, FrozenServerFailsTheCallInTime) {
    if (!kSafe) GTEST_SKIP() << "the default profile has no time-outs";
    const pid_t pid = static_cast<pid_t>(server_pid());
    ASSERT_GT(pid, 0);
    struct Thaw {
        pid_t pid;
        ~Thaw() { kill(pid, SIGCONT); }
    } thaw{pid};
    ASSERT_EQ(kill(pid, SIGSTOP), 0);
    // On a connected handle (a read times out), then on one that must reconnect first.
    for (int i = 0; i < 2; ++i) {
        const auto start = std::chrono::steady_clock::now();
        EXPECT_EQ(probe(&h), -1);
        const double s = std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
        EXPECT_LT(s, 15.0) << "call " << i;
        printf("frozen server, call %d failed after %.1f s\n", i, s);
    }
    kill(pid, SIGCONT);
    probe(&h);
    EXPECT_EQ(probe(&h), 0);
}

// The paths that the default profile leaks on purpose, also under every
// allocation failure (LSan here; valgrind runs the same in a plain build).
TEST_F(SafeTest, LeakPathsFreeEverything) {
    if (!kSafe) GTEST_SKIP() << "the family tests measure the default profile's deliberate leaks";
    truncate(kTables);
    exec("insert into SecurityAreas (securityAreaId, name) values (1, 'z')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'eth1'), (1, 'eth2')");
    exec("insert into Servers (serverId, name) values (1, 's')");
    exec("insert into ServerRules (serverId, type) values (1, 6), (1, 17)");
    exec("insert into Apps (appId, name, description) values (1, 'a', 'd'), (2, 'a', 'e')");
    exec("insert into Traits (appId, toffset, trait) values (1, 'o', 't'), (1, 'p', 'u')");
    EXPECT_EQ(selectInterfaceInfoByNameSA(&h, W("z"), g_buf, sizeof g_buf), 2);
    EXPECT_STREQ(g_buf, "eth1,eth2");
    for (int n = 1; n <= 12; ++n) {
        FailAlloc fail(n);
        db_free_predefsrv_info(db_get_srv_info_by_name(&h, W("s")));
        db_free_app_info(db_get_app_info_by_name(&h, "a"));
        db_free_trait_info(db_get_trait_info_by_appid(&h, 1));
    }
}

}  // namespace
