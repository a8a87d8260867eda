#include "harness.h"

#include <dlfcn.h>
#include <errmsg.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>

#include <algorithm>
#include <atomic>
#include <fstream>
#include <mutex>

// Live heap bytes as the address sanitizer counts them (requested sizes); weak
// like the leak checker's pause (harness.h).
extern "C" size_t __sanitizer_get_current_allocated_bytes(void) __attribute__((weak));

namespace {

std::mutex g_mutex;
std::vector<std::string> g_statements;
std::vector<testbed::LogRecord> g_logs;
std::vector<std::pair<int, unsigned int>> g_options;
int g_option = 0, g_facility = 0, g_fail_fetch_at = 0, g_fail_options_at = 0;
int g_open = 0;  // openlog calls not yet closed
std::string g_ident;
thread_local bool t_own = false;    // the harness's own connection is not recorded
std::atomic<bool> g_paused{false};  // nothing is recorded (heap counts see only the library)
MYSQL* g_db = nullptr;

// The client library's own functions of those names.
template <class Fn> Fn real(const char* name) { return reinterpret_cast<Fn>(dlsym(RTLD_NEXT, name)); }
const auto real_query = real<int (*)(MYSQL*, const char*)>("mysql_query");
const auto real_fetch = real<MYSQL_ROW (*)(MYSQL_RES*)>("mysql_fetch_row");
const auto real_options = real<int (*)(MYSQL*, enum mysql_option, const void*)>("mysql_options");

// True (and counted down) when the call that brings `at` to 0 is now.
bool now(int& at) { return at > 0 && --at == 0; }

__attribute__((format(printf, 2, 0))) void record(int priority, const char* fmt, va_list ap) {
    if (g_paused) return;
    char buf[65536];
    vsnprintf(buf, sizeof buf, fmt, ap);
    std::lock_guard<std::mutex> lock(g_mutex);
    g_logs.push_back({priority, buf, g_ident, g_option, g_facility, g_open == 1});
}

void own_connect() {
    if (g_db != nullptr) mysql_close(g_db);
    g_db = mysql_init(nullptr);
    // Port 0: the client takes MYSQL_TCP_PORT.
    if (mysql_real_connect(g_db, "127.0.0.1", "root", "582914", "firewall", 0, nullptr, 0) == nullptr) {
        ADD_FAILURE() << "test connection: " << mysql_error(g_db);
    }
}

// Runs sql on the harness's connection (reconnected once when the server was restarted).
bool own_query(const std::string& sql, bool must = true) {
    t_own = true;
    if (g_db == nullptr) own_connect();
    int rc = real_query(g_db, sql.c_str());
    if (rc != 0 && (mysql_errno(g_db) == CR_SERVER_GONE_ERROR || mysql_errno(g_db) == CR_SERVER_LOST)) {
        own_connect();
        rc = real_query(g_db, sql.c_str());
    }
    t_own = false;
    if (rc != 0 && must) ADD_FAILURE() << "test statement failed: " << sql << ": " << mysql_error(g_db);
    return rc == 0;
}

void run_script(const char* action) {
    const char* dir = getenv("UTIL_DB_SERVER_DIR");
    ASSERT_NE(dir, nullptr) << "UTIL_DB_SERVER_DIR is not set: run the tests through scripts/with-server.sh";
    std::string cmd = std::string(UTIL_DB_SOURCE_DIR) + "/scripts/test-server.sh " + action + " '" + dir + "' >/dev/null";
    ASSERT_EQ(system(cmd.c_str()), 0) << cmd;
}

}  // namespace

// ---- Interposed client and system-log functions ----

extern "C" int mysql_query(MYSQL* mysql, const char* q) {
    if (!t_own && !g_paused) {
        std::lock_guard<std::mutex> lock(g_mutex);
        g_statements.emplace_back(q ? q : "(null)");
    }
    return real_query(mysql, q);
}

extern "C" int mysql_options(MYSQL* mysql, enum mysql_option option, const void* arg) {
    if (!t_own && !g_paused) {
        std::lock_guard<std::mutex> lock(g_mutex);
        if (now(g_fail_options_at)) return 1;
        unsigned int value = 0;
        if (arg != nullptr) memcpy(&value, arg, sizeof value);
        g_options.emplace_back(static_cast<int>(option), value);
    }
    return real_options(mysql, option, arg);
}

extern "C" MYSQL_ROW mysql_fetch_row(MYSQL_RES* res) {
    std::unique_lock<std::mutex> lock(g_mutex);
    if (!t_own && now(g_fail_fetch_at)) return nullptr;
    lock.unlock();
    return real_fetch(res);
}

extern "C" void openlog(const char* ident, int option, int facility) {
    std::lock_guard<std::mutex> lock(g_mutex);
    ++g_open;
    g_ident = ident ? ident : "", g_option = option, g_facility = facility;
}

extern "C" void closelog(void) {
    std::lock_guard<std::mutex> lock(g_mutex);
    --g_open;
}

extern "C" void vsyslog(int priority, const char* fmt, va_list ap) { record(priority, fmt, ap); }
extern "C" void __vsyslog_chk(int priority, int, const char* fmt, va_list ap) { record(priority, fmt, ap); }

extern "C" void syslog(int priority, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    record(priority, fmt, ap);
    va_end(ap);
}

extern "C" void __syslog_chk(int priority, int, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    record(priority, fmt, ap);
    va_end(ap);
}

namespace testbed {

// Copies, taken under the lock.
std::vector<std::string> statements() { std::lock_guard<std::mutex> lock(g_mutex); return g_statements; }
std::vector<LogRecord> logs() { std::lock_guard<std::mutex> lock(g_mutex); return g_logs; }
std::vector<std::pair<int, unsigned int>> options() { std::lock_guard<std::mutex> lock(g_mutex); return g_options; }

void clear() {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_options.clear();
    g_statements.clear();
    g_logs.clear();
}

void fail_options_at(int n) { std::lock_guard<std::mutex> lock(g_mutex); g_fail_options_at = n; }
void fail_fetch_at(int n) { std::lock_guard<std::mutex> lock(g_mutex); g_fail_fetch_at = n; }

void exec(const std::string& sql) { own_query(sql); }

std::vector<Row> rows(const std::string& sql) {
    std::vector<Row> out;
    if (!own_query(sql)) return out;
    t_own = true;
    if (MYSQL_RES* res = mysql_store_result(g_db)) {
        while (MYSQL_ROW row = real_fetch(res)) {
            Row& r = out.emplace_back();
            for (unsigned int i = 0; i < mysql_num_fields(res); ++i) r.push_back(row[i] ? Cell(row[i]) : std::nullopt);
        }
        mysql_free_result(res);
    }
    t_own = false;
    return out;
}

Cell value(const std::string& sql) {
    std::vector<Row> r = rows(sql);
    return r.empty() || r[0].empty() ? std::nullopt : r[0][0];
}

long count(const std::string& table, const std::string& where) {
    Cell c = value("select count(*) from " + table + (where.empty() ? "" : " where " + where));
    return c ? atol(c->c_str()) : -1;
}

void truncate(const std::vector<std::string>& tables) {
    for (const std::string& t : tables) exec("truncate table " + t);
}

void server_stop() { run_script("stop"); }
void server_start() { run_script("start"); }

long server_pid() {
    long pid = -1;
    const char* dir = getenv("UTIL_DB_SERVER_DIR");
    std::ifstream(std::string(dir ? dir : ".") + "/mysqld.pid") >> pid;
    return pid;
}

void kill_connections() {
    for (const Row& r : rows("select id from information_schema.processlist where id <> connection_id() "
                             "and user = 'root' and command <> 'Daemon'")) {
        own_query("KILL " + *r[0], false);  // one may have gone already
    }
}

long leaked_bytes(const std::function<void()>& call) {
    if (__sanitizer_get_current_allocated_bytes == nullptr) {
        ADD_FAILURE() << "leaked_bytes needs the address sanitizer";
        return -1;
    }
    g_paused = true;
    Unreported unreported;
    const long before = static_cast<long>(__sanitizer_get_current_allocated_bytes());
    call();
    const long after = static_cast<long>(__sanitizer_get_current_allocated_bytes());
    g_paused = false;
    return after - before;
}

std::string strip_site(const std::string& text, std::string* file) {
    // "path:line " then the message
    const size_t colon = text.find(':'), end = text.find_first_not_of("0123456789", colon + 1);
    if (colon == std::string::npos || end == colon + 1 || end >= text.size() || text[end] != ' ') return text;
    if (file != nullptr) *file = text.substr(0, colon);
    return text.substr(end + 1);
}

void LibraryTest::SetUp() {
    log_off();
    ASSERT_EQ(util_db_init(&h), &h);
    ASSERT_EQ(util_db_connect(&h), &h);
    log_on(7);
    clear();
}

void LibraryTest::TearDown() {
    log_off();
    if (h.conn != nullptr) {
        util_db_disconnect(&h);
        util_db_deinit(&h);
    }
    fail_fetch_at(0);
}


std::vector<std::string> LibraryTest::texts(int priority) const {
    std::vector<std::string> out;
    for (const LogRecord& r : logs()) {
        if (r.priority == priority) out.push_back(priority == 7 ? strip_site(r.text) : r.text);
    }
    return out;
}

std::vector<std::string> LibraryTest::records() const {
    std::vector<std::string> out;
    for (const LogRecord& r : logs()) {
        out.push_back(std::to_string(r.priority) + ":" + (r.priority == 7 ? strip_site(r.text) : r.text));
    }
    return out;
}

bool LibraryTest::logged(int priority, const std::string& text) const {
    const std::vector<std::string> t = texts(priority);
    return std::find(t.begin(), t.end(), text) != t.end();
}

}  // namespace testbed
