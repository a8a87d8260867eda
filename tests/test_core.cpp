// Connection handle, statement execution, diagnostic log and field model,
// against the private server.
#include <stdlib.h>
#include <string.h>

#include <map>

#include "harness.h"

using namespace testbed;

namespace {

// A handle that has been initialised but never connected.
class BlankHandleTest : public LibraryTest {
protected:
    void SetUp() override {
        log_on(7);
        clear();
    }
};

}  // namespace

// ---- Lifecycle ----

TEST_F(BlankHandleTest, InitValidatesAllocatesOnceAndConnectNeedsInit) {
    EXPECT_EQ(util_db_init(nullptr), nullptr);
    EXPECT_EQ(records(), (std::vector<std::string>{"7:Invalid param\n"}));
    std::string file;  // the core's debug records carry its source file
    strip_site(logs()[0].text, &file);
    EXPECT_EQ(file, "util-db-common.cpp");

    clear();
    EXPECT_EQ(util_db_connect(&h), nullptr);  // blank handle: nothing logged
    EXPECT_TRUE(logs().empty());
    EXPECT_TRUE(sent().empty());

    ASSERT_EQ(util_db_init(&h), &h);
    ASSERT_NE(h.conn, nullptr);
    ASSERT_NE(h.mutex, nullptr);
    EXPECT_EQ(h.flag, 0u);
    void* conn = h.conn;
    pthread_mutex_t* mutex = h.mutex;
    h.flag = 0x30;  // the caller's bits survive everything the library does
    const unsigned long before = util_db_test_alloc_count;
    EXPECT_EQ(util_db_init(&h), &h);
    EXPECT_EQ(util_db_test_alloc_count, before);
    EXPECT_EQ(h.conn, conn);
    EXPECT_EQ(h.mutex, mutex);
    EXPECT_EQ(h.flag, 0x30u);

    EXPECT_EQ(util_db_connect(&h), &h);
    EXPECT_EQ(h.flag, 0x31u);
    // The default profile sets option 31 to 7 (no time-out in effect); the
    // safe one sets the connect, read and write time-outs instead.
    std::map<int, unsigned int> set;
    for (const auto& o : options()) set[o.first] = o.second;
    const std::map<int, unsigned int> want =
        kSafe ? std::map<int, unsigned int>{{MYSQL_OPT_CONNECT_TIMEOUT, UTIL_DB_CONNECT_TIMEOUT},
                                            {MYSQL_OPT_READ_TIMEOUT, UTIL_DB_READ_TIMEOUT},
                                            {MYSQL_OPT_WRITE_TIMEOUT, UTIL_DB_WRITE_TIMEOUT}}
              : std::map<int, unsigned int>{{31, 7u}};
    for (const auto& w : want) EXPECT_EQ(set.count(w.first) ? set[w.first] : 0u, w.second) << "option " << w.first;
    EXPECT_EQ(set.count(31), kSafe ? 0u : 1u);
    util_db_disconnect(&h);
    EXPECT_EQ(h.flag, 0x30u);
    EXPECT_EQ(util_db_deinit(&h), 0);
    EXPECT_EQ(h.conn, nullptr);
    EXPECT_EQ(h.mutex, nullptr);
    EXPECT_EQ(h.flag, 0x30u);
    clear();
    EXPECT_EQ(util_db_deinit(&h), -1);
    EXPECT_EQ(records(), (std::vector<std::string>{"7:Invalid param\n"}));
}

TEST_F(BlankHandleTest, InitReportsEachAllocationFailure) {
    {
        FailAlloc fail(1);
        EXPECT_EQ(util_db_init(&h), nullptr);
    }
    EXPECT_EQ(h.mutex, nullptr);
    EXPECT_EQ(h.conn, nullptr);
    EXPECT_EQ(records(), (std::vector<std::string>{"3:Fail to get data base mutex!\n"}));

    clear();
    {
        FailAlloc fail(2);
        EXPECT_EQ(util_db_init(&h), nullptr);
    }
    EXPECT_EQ(records(), (std::vector<std::string>{"3:Fail to get data base conn!\n"}));
    ASSERT_NE(h.mutex, nullptr);  // the lock stays with the handle
    EXPECT_EQ(h.conn, nullptr);
    // A second init completes the handle with the lock it already has.
    pthread_mutex_t* mutex = h.mutex;
    EXPECT_EQ(util_db_init(&h), &h);
    EXPECT_EQ(h.mutex, mutex);
    EXPECT_NE(h.conn, nullptr);
}

TEST_F(BlankHandleTest, ConnectStepsReportTheirFailures) {
    ASSERT_EQ(util_db_init(&h), &h);
    db_fd_t* fd = static_cast<db_fd_t*>(h.conn);
    clear();
    EXPECT_EQ(_db_init(nullptr), nullptr);
    EXPECT_EQ(_db_conn(nullptr, "127.0.0.1", "root", "582914", "firewall"), nullptr);
    EXPECT_TRUE(logs().empty());
    EXPECT_EQ(_db_conn(fd, "127.0.0.1", "root", nullptr, "firewall"), nullptr);
    EXPECT_EQ(records(), (std::vector<std::string>{"7:Invalid param\n"}));
    clear();
    fail_options_at(1);
    EXPECT_EQ(util_db_connect(&h), nullptr);
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_EQ(records(), (std::vector<std::string>{"3:Fail to set data base options!\n"}));
    clear();  // never connected: no ping
    EXPECT_EQ(util_db_chkconnect(&h), -1);
    EXPECT_EQ(util_db_chkconnect(nullptr), -1);
    util_db_disconnect(nullptr);
    EXPECT_EQ(records(), (std::vector<std::string>{"5:Disconnected whit data base!\n", "7:Invalid param\n",
                                                   "7:Invalid param\n"}));
}

TEST_F(LibraryTest, ChkconnectPingsAndDisconnectedHandleReconnectsAtNextStatement) {
    EXPECT_EQ(util_db_chkconnect(&h), 0);
    util_db_disconnect(&h);
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_EQ(util_db_chkconnect(&h), -1);  // no ping on a disconnected handle
    EXPECT_EQ(db_query(&h, "select 1"), 0);
    EXPECT_EQ(h.flag & 1u, 1u);
    EXPECT_EQ(records(), (std::vector<std::string>{"7: Begin", "7: End", "5:Close data base connection\n",
                                                   "5:Disconnected whit data base!\n", "7:database cmd: select 1\n",
                                                   "5:Close data base connection\n"}));
    EXPECT_EQ(sent(), (std::vector<std::string>{"select 1"}));
    // Each record is written between its own openlog and closelog.
    for (const LogRecord& r : logs()) {
        EXPECT_TRUE(r.opened);
        EXPECT_EQ(r.ident, "Util-db");
        EXPECT_EQ(r.option, 3);
        EXPECT_EQ(r.facility, 5);
    }
    EXPECT_EQ(open_count(), 6);
    EXPECT_EQ(close_count(), 6);
}

TEST_F(LibraryTest, FailedPingReturnsThePingsValueAndTheNextStatementReconnects) {
    const unsigned long id = mysql_thread_id(static_cast<MYSQL*>(h.conn));
    exec("KILL " + std::to_string(id));
    const int ping = util_db_chkconnect(&h);
    EXPECT_NE(ping, 0);
    EXPECT_NE(ping, -1);  // the ping's own value
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_EQ(records(), (std::vector<std::string>{"7: Begin", "7: End", "5:Disconnected whit data base!\n"}));
    clear();
    EXPECT_EQ(db_query(&h, "select 1"), 0);
    EXPECT_EQ(h.flag & 1u, 1u);
    EXPECT_NE(mysql_thread_id(static_cast<MYSQL*>(h.conn)), id);
}

TEST_F(LibraryTest, ServerDownThenUp) {
    server_stop();
    int ping = util_db_chkconnect(&h);
    EXPECT_NE(ping, 0);
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_TRUE(logged(5, "Disconnected whit data base!\n"));

    clear();
    EXPECT_EQ(db_query(&h, "select 1"), -1);
    EXPECT_EQ(db_store_result(&h, "select 1"), nullptr);
    EXPECT_EQ(h.flag & 1u, 0u);
    EXPECT_TRUE(sent().empty());
    const std::vector<std::string> errors = texts(3);
    ASSERT_EQ(errors.size(), 2u);
    for (const std::string& e : errors) {
        EXPECT_EQ(e.rfind("Fail to connect data base:", 0), 0u) << e;
        EXPECT_EQ(e.back(), '\n');
    }

    server_start();
    clear();
    EXPECT_EQ(db_query(&h, "select 1"), 0);
    EXPECT_EQ(h.flag & 1u, 1u);
    EXPECT_EQ(util_db_chkconnect(&h), 0);
}

// ---- Statements ----

TEST_F(LibraryTest, StoreResultTracesAndGivesAnEmptyResultSet) {
    void* res = db_store_result(&h, "select name from SecurityAreas where name = 'none'");
    ASSERT_NE(res, nullptr);
    EXPECT_EQ(mysql_num_rows(static_cast<MYSQL_RES*>(res)), 0u);
    mysql_free_result(static_cast<MYSQL_RES*>(res));
    EXPECT_EQ(records(), (std::vector<std::string>{
                             "7: Begin", "7:database cmd: select name from SecurityAreas where name = 'none'\n",
                             "7: End"}));
}

// The recursive lock itself is proven by every reconnect (it locks again).
TEST_F(LibraryTest, MutexGetGivesAZeroedLockOrLogs) {
    pthread_mutex_t* z = util_db_mutex_get();
    static const pthread_mutex_t zero{};
    ASSERT_NE(z, nullptr);
    EXPECT_EQ(memcmp(z, &zero, sizeof zero), 0);
    free(z);
    FailAlloc fail(1);
    EXPECT_EQ(util_db_mutex_get(), nullptr);
    EXPECT_EQ(records(), (std::vector<std::string>{"3:Fail to get data base mutex!\n"}));
}

// ---- Log facility ----

TEST_F(LibraryTest, SwitchAndLevelGateEveryRecord) {
    log_off();
    EXPECT_EQ(db_query(&h, "selec 1"), -1);
    util_db_log_switch = 2;
    util_db_log_level = 7;
    EXPECT_EQ(db_query(&h, "selec 1"), -1);
    util_db_log_switch = 1;
    util_db_log_level = 0;
    EXPECT_EQ(db_query(&h, "selec 1"), -1);
    EXPECT_TRUE(logs().empty());

    log_on(5);
    util_db_disconnect(&h);
    EXPECT_EQ(db_query(&h, "selec 1"), -1);
    const std::vector<std::string> r = records();
    ASSERT_EQ(r.size(), 3u);
    EXPECT_EQ(r[0], "5:Close data base connection\n");
    EXPECT_EQ(r[1], "5:Close data base connection\n");
    EXPECT_EQ(r[2].rfind("3:Data base query faild: ", 0), 0u);
}

TEST_F(LibraryTest, DebugRecordsCarryTheSiteAndAreCutAt2048Bytes) {
    const std::string long_text(3000, 'q');
    const int line = __LINE__ + 1;
    UTIL_DB_LOG(7, "%s", long_text.c_str());
    const std::vector<LogRecord> all = logs();
    ASSERT_EQ(all.size(), 1u);
    const std::string prefix = "tests/test_core.cpp:" + std::to_string(line) + " ";
    EXPECT_EQ(all[0].text.size(), 2047u);
    EXPECT_EQ(all[0].text, prefix + long_text.substr(0, 2047 - prefix.size()));

    clear();
    UTIL_DB_LOG(3, "%s", long_text.c_str());  // other priorities are not cut nor prefixed
    EXPECT_EQ(texts(3), (std::vector<std::string>{long_text}));
}

// ---- Field, condition and table-description model ----

TEST(FieldModel, LookupsFillRowAndValueToString) {
    struct table_field_help cols[2] = {{1, "id", DB_INT, 11, 0, 0, 1}, {2, "name", DB_VARCHAR, 64, 0, 0, 0}};
    const auto str = [](const char* p) { return std::string(p ? p : "(null)"); };
    EXPECT_EQ((std::vector<std::string>{str(db_get_cond(DB_EQU)), str(db_get_cond(DB_NEQ)),
                                        str(db_get_cond(DB_COND_TYPE_NULL)), str(db_get_logic(DB_AND)),
                                        str(db_get_logic(DB_NOT)), str(db_get_logic(DB_LOGIC_TYPE_NULL)),
                                        str(db_get_table(DB_TABLE_NULL)), str(db_get_table(DB_TABLE_ID_HA)),
                                        str(error_help_info[0].err_str), str(db_val2str(cols, 0)),
                                        str(db_val2str(cols, 2))}),  // the index is only tested for zero
              (std::vector<std::string>{"=", "!=", "(null)", "and", "not", "(null)", "(null)", "", "", "(null)", "id"}));
    EXPECT_TRUE(db_get_help_info(DB_TABLE_ID_HA) == nullptr && db_get_help_info(DB_TABLE_NULL) == nullptr);
    EXPECT_EQ(error_help_info[0].err_code, 0);

    struct db_field rows[4];
    memset(rows, 0, sizeof rows);
    struct db_field f{};
    f.type = DB_VARCHAR;
    f.id = 3;
    strcpy(f.value.string, "lan");
    f.cond = DB_EQU;
    f.logic = DB_AND;
    EXPECT_EQ(db_fill_row(rows, &f, 3, 0), 0);
    EXPECT_EQ(memcmp(&rows[2], &f, sizeof f), 0);
    EXPECT_EQ(rows[1].type, DB_TYPE_NULL);
    EXPECT_EQ(db_fill_row(rows, &f, 0, 4), -1);
    EXPECT_EQ(db_fill_row(nullptr, &f, 1, 4), -1);
    EXPECT_EQ(db_fill_row(rows, nullptr, 1, 4), -1);

    char out[8];
    memset(out, 'k', sizeof out);
    struct db_field none{};
    EXPECT_EQ(_db_field_val2str(&none, out, sizeof out), 0);
    EXPECT_EQ(out[0], 'k');
    struct db_field num{};
    num.type = DB_TINYINT;
    num.value.integer = -1234567;
    EXPECT_EQ(_db_field_val2str(&num, out, sizeof out), 8);  // the full length, cut in the buffer
    EXPECT_STREQ(out, "-123456");
    EXPECT_EQ(_db_field_val2str(&f, out, sizeof out), 3);
    EXPECT_STREQ(out, "lan");
}
