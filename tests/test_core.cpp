// Connection handle, statement execution, diagnostic log and field model,
// against the private server.
#include <stdlib.h>
#include <string.h>

#include <map>
#include <tuple>

#include "harness.h"

using namespace testbed;

namespace {

using Strings = std::vector<std::string>;
using Ints = std::vector<int>;

// A handle that has been initialised but never connected.
class BlankHandleTest : public LibraryTest {
protected:
    void SetUp() override {
        log_on(7);
        clear();
    }
};

// Whether the handle holds a connection object and a lock, and its flag.
using State = std::tuple<bool, bool, unsigned int>;
State state(const db_handle_t& h) { return State(h.conn != nullptr, h.mutex != nullptr, h.flag); }

}  // namespace

// ---- Lifecycle ----

TEST_F(BlankHandleTest, InitValidatesAllocatesOnceAndConnectNeedsInit) {
    EXPECT_EQ(util_db_init(nullptr), nullptr);
    EXPECT_EQ(records(), Strings{"7:Invalid param\n"});
    std::string file;  // the core's debug records carry its source file
    strip_site(logs()[0].text, &file);
    EXPECT_EQ(file, "util-db-common.cpp");

    clear();
    EXPECT_EQ(util_db_connect(&h), nullptr);  // blank handle: nothing logged
    EXPECT_TRUE(logs().empty() && sent().empty());

    ASSERT_EQ(util_db_init(&h), &h);
    ASSERT_EQ(state(h), State(true, true, 0));
    const db_handle_t first = h;
    h.flag = 0x30;  // the caller's bits survive everything the library does
    const unsigned long before = util_db_test_alloc_count;
    EXPECT_EQ(util_db_init(&h), &h);
    EXPECT_EQ(util_db_test_alloc_count, before);
    EXPECT_TRUE(h.conn == first.conn && h.mutex == first.mutex);

    EXPECT_EQ(util_db_connect(&h), &h);
    EXPECT_EQ(h.flag, 0x31u);
    // The default profile sets option 31 to 7 (no time-out in effect); the
    // safe one sets the connect, read and write time-outs instead.
    const std::map<int, unsigned int> want =
        kSafe ? std::map<int, unsigned int>{{MYSQL_OPT_CONNECT_TIMEOUT, UTIL_DB_CONNECT_TIMEOUT},
                                            {MYSQL_OPT_READ_TIMEOUT, UTIL_DB_READ_TIMEOUT},
                                            {MYSQL_OPT_WRITE_TIMEOUT, UTIL_DB_WRITE_TIMEOUT}}
              : std::map<int, unsigned int>{{31, 7u}};
    std::map<int, unsigned int> set;  // option 31 and the time-outs, as last set
    for (const auto& [option, value] : options()) {
        if (option == 31 || option == MYSQL_OPT_CONNECT_TIMEOUT || option == MYSQL_OPT_READ_TIMEOUT ||
            option == MYSQL_OPT_WRITE_TIMEOUT) {
            set[option] = value;
        }
    }
    EXPECT_EQ(set, want);
    util_db_disconnect(&h);
    EXPECT_EQ(h.flag, 0x30u);
    EXPECT_EQ(util_db_deinit(&h), 0);
    EXPECT_EQ(state(h), State(false, false, 0x30));
    clear();
    EXPECT_EQ(util_db_deinit(&h), -1);
    EXPECT_EQ(records(), Strings{"7:Invalid param\n"});
}

TEST_F(BlankHandleTest, InitReportsEachAllocationFailure) {
    // The allocation made to fail, its record, the handle after: the lock stays with it.
    const struct { int n; const char* record; State after; } cases[] = {
        {1, "3:Fail to get data base mutex!\n", State(false, false, 0)},
        {2, "3:Fail to get data base conn!\n", State(false, true, 0)}};
    for (const auto& c : cases) {
        clear();
        {
            FailAlloc fail(c.n);
            EXPECT_EQ(util_db_init(&h), nullptr);
        }
        EXPECT_EQ(records(), Strings{c.record});
        EXPECT_EQ(state(h), c.after);
    }
    // A second init completes the handle with the lock it already has.
    pthread_mutex_t* mutex = h.mutex;
    EXPECT_EQ(util_db_init(&h), &h);
    EXPECT_TRUE(h.mutex == mutex && h.conn != nullptr);
}

TEST_F(BlankHandleTest, ConnectStepsReportTheirFailures) {
    ASSERT_EQ(util_db_init(&h), &h);
    clear();
    EXPECT_EQ(_db_init(nullptr), nullptr);
    EXPECT_EQ(_db_conn(nullptr, "127.0.0.1", "root", "582914", "firewall"), nullptr);
    EXPECT_TRUE(logs().empty());
    EXPECT_EQ(_db_conn(static_cast<db_fd_t*>(h.conn), "127.0.0.1", "root", nullptr, "firewall"), nullptr);
    EXPECT_EQ(records(), Strings{"7:Invalid param\n"});
    clear();
    fail_options_at(1);
    EXPECT_EQ(util_db_connect(&h), nullptr);
    EXPECT_EQ(records(), Strings{"3:Fail to set data base options!\n"});
    clear();  // never connected: no ping
    EXPECT_EQ(util_db_chkconnect(&h), -1);
    EXPECT_EQ(util_db_chkconnect(nullptr), -1);
    util_db_disconnect(nullptr);
    EXPECT_EQ(records(), (Strings{"5:Disconnected whit data base!\n", "7:Invalid param\n", "7:Invalid param\n"}));
}

// A disconnected handle reconnects at its next statement; a result set with no
// row is still a result.
TEST_F(LibraryTest, ChkconnectPingsAndDisconnectedHandleReconnectsAtNextStatement) {
    EXPECT_EQ(util_db_chkconnect(&h), 0);
    util_db_disconnect(&h);
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_EQ(util_db_chkconnect(&h), -1);  // no ping on a disconnected handle
    void* res = db_store_result(&h, "select name from SecurityAreas where name = 'none'");
    ASSERT_NE(res, nullptr);
    EXPECT_EQ(mysql_num_rows(static_cast<MYSQL_RES*>(res)), 0u);
    mysql_free_result(static_cast<MYSQL_RES*>(res));
    EXPECT_EQ(h.flag & 1u, 1u);
    EXPECT_EQ(records(), (Strings{"7: Begin", "7: End", "5:Close data base connection\n",
                                  "5:Disconnected whit data base!\n", "7: Begin",
                                  "7:database cmd: select name from SecurityAreas where name = 'none'\n",
                                  "5:Close data base connection\n", "7: End"}));
    EXPECT_EQ(sent(), Strings{"select name from SecurityAreas where name = 'none'"});
    // Each record is written inside its own openlog/closelog pair.
    for (const LogRecord& r : logs()) {
        EXPECT_EQ(std::make_tuple(r.opened, r.ident, r.option, r.facility), std::make_tuple(true, "Util-db", 3, 5));
    }
}

TEST_F(LibraryTest, FailedPingReturnsThePingsValueAndTheNextStatementReconnects) {
    exec("KILL " + std::to_string(mysql_thread_id(static_cast<MYSQL*>(h.conn))));
    const int ping = util_db_chkconnect(&h);
    EXPECT_TRUE(ping != 0 && ping != -1) << ping;  // the ping's own value
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_EQ(records(), (Strings{"7: Begin", "7: End", "5:Disconnected whit data base!\n"}));
    EXPECT_EQ(db_query(&h, "select 1"), 0);  // reconnected
}

TEST_F(LibraryTest, ServerDownThenUp) {
    server_stop();
    EXPECT_NE(util_db_chkconnect(&h), 0);  // marks the handle (the killed-connection test checks how)
    clear();
    EXPECT_EQ(db_query(&h, "select 1"), -1);
    EXPECT_EQ(db_store_result(&h, "select 1"), nullptr);
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_TRUE(sent().empty());
    Strings errors = texts(3);  // then the client's message
    for (std::string& e : errors) e = e.substr(0, strlen("Fail to connect data base:")) + e.back();
    EXPECT_EQ(errors, Strings(2, "Fail to connect data base:\n"));

    server_start();
    EXPECT_EQ(db_query(&h, "select 1"), 0);
}

// The recursive lock itself is proven by every reconnect (it locks again); its
// allocation failure by the init test.
TEST(MutexGet, GivesAZeroedLock) {
    pthread_mutex_t* z = util_db_mutex_get();
    static const pthread_mutex_t zero{};
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(memcmp(z, &zero, sizeof zero), 0);
    free(z);
}

// ---- Log facility ----

TEST_F(LibraryTest, SwitchAndLevelGateEveryRecord) {
    for (const auto& [on, level] : {std::pair{0, 7}, {2, 7}, {1, 0}}) {  // switch off, not 1; level 0
        util_db_log_switch = on, util_db_log_level = level;
        EXPECT_EQ(db_query(&h, "selec 1"), -1);
    }
    EXPECT_TRUE(logs().empty());

    log_on(5);
    util_db_disconnect(&h);
    EXPECT_EQ(db_query(&h, "selec 1"), -1);
    Strings r = records();
    ASSERT_EQ(r.size(), 3u);
    r[2].resize(strlen("3:Data base query faild: "));  // then the server's message
    EXPECT_EQ(r, (Strings{"5:Close data base connection\n", "5:Close data base connection\n",
                          "3:Data base query faild: "}));
}

TEST_F(LibraryTest, DebugRecordsCarryTheSiteAndAreCutAt2048Bytes) {
    const std::string long_text(3000, 'q');
    const int line = __LINE__ + 1;
    UTIL_DB_LOG(7, "%s", long_text.c_str());
    ASSERT_EQ(logs().size(), 1u);
    const std::string prefix = "tests/test_core.cpp:" + std::to_string(line) + " ";
    EXPECT_EQ(logs()[0].text, prefix + long_text.substr(0, 2047 - prefix.size()));

    clear();
    UTIL_DB_LOG(3, "%s", long_text.c_str());  // other priorities are not cut nor prefixed
    EXPECT_EQ(texts(3), Strings{long_text});
}

// ---- Field, condition and table-description model ----

TEST(FieldModel, LookupsFillRowAndValueToString) {
    struct table_field_help cols[2] = {{1, "id", DB_INT, 11, 0, 0, 1}, {2, "name", DB_VARCHAR, 64, 0, 0, 0}};
    const auto str = [](const char* p) { return std::string(p ? p : "(null)"); };
    EXPECT_EQ((Strings{str(db_get_cond(DB_EQU)), str(db_get_cond(DB_NEQ)),
                                        str(db_get_cond(DB_COND_TYPE_NULL)), str(db_get_logic(DB_AND)),
                                        str(db_get_logic(DB_NOT)), str(db_get_logic(DB_LOGIC_TYPE_NULL)),
                                        str(db_get_table(DB_TABLE_NULL)), str(db_get_table(DB_TABLE_ID_HA)),
                                        str(error_help_info[0].err_str), str(db_val2str(cols, 0)),
                                        str(db_val2str(cols, 2))}),  // the index is only tested for zero
              (Strings{"=", "!=", "(null)", "and", "not", "(null)", "(null)", "", "", "(null)", "id"}));
    EXPECT_TRUE(db_get_help_info(DB_TABLE_ID_HA) == nullptr && db_get_help_info(DB_TABLE_NULL) == nullptr);
    EXPECT_EQ(error_help_info[0].err_code, 0);

    struct db_field rows[4] = {};
    struct db_field f{};
    f.type = DB_VARCHAR, f.id = 3, f.cond = DB_EQU, f.logic = DB_AND;
    strcpy(f.value.string, "lan");
    EXPECT_EQ(db_fill_row(rows, &f, 3, 0), 0);
    EXPECT_EQ(memcmp(&rows[2], &f, sizeof f), 0);
    EXPECT_EQ(rows[1].type, DB_TYPE_NULL);
    EXPECT_EQ((Ints{db_fill_row(rows, &f, 0, 4), db_fill_row(nullptr, &f, 1, 4), db_fill_row(rows, nullptr, 1, 4)}),
              Ints(3, -1));

    char out[8] = {'k'};
    struct db_field none{};
    EXPECT_EQ(_db_field_val2str(&none, out, sizeof out), 0);
    EXPECT_EQ(out[0], 'k');
    struct db_field num{};
    num.type = DB_TINYINT, num.value.integer = -1234567;
    EXPECT_EQ(_db_field_val2str(&num, out, sizeof out), 8);  // the full length, cut in the buffer
    EXPECT_STREQ(out, "-123456");
    EXPECT_EQ(_db_field_val2str(&f, out, sizeof out), 3);
    EXPECT_STREQ(out, "lan");
}
