#include "harness.h"

#include <dlfcn.h>
#include <errmsg.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <syslog.h>


#include <atomic>
#include <fstream>
#include <mutex>

// Live heap bytes as the address sanitizer counts them (requested sizes).
extern "C" size_t __sanitizer_get_current_allocated_bytes(void);

namespace {

std::mutex g_mutex;
std::vector<std::string> g_statements;
std::vector<testbed::LogRecord> g_logs;
int g_open = 0;
int g_close = 0;
bool g_opened = false;
std::string g_ident;
int g_option = 0;
int g_facility = 0;
int g_fail_fetch_at = 0;
int g_fail_options_at = 0;
thread_local bool t_own = false;  // the harness's own connection is not recorded
std::atomic<bool> g_paused{false};  // nothing is recorded (heap counts see only the library)

std::vector<std::pair<int, unsigned int>> g_options;
using query_fn = int (*)(MYSQL*, const char*);
using options_fn = int (*)(MYSQL*, enum mysql_option, const void*);
using fetch_fn = MYSQL_ROW (*)(MYSQL_RES*);

query_fn real_query() {
    static query_fn fn = reinterpret_cast<query_fn>(dlsym(RTLD_NEXT, "mysql_query"));
    return fn;
}

fetch_fn real_fetch() {
    static fetch_fn fn = reinterpret_cast<fetch_fn>(dlsym(RTLD_NEXT, "mysql_fetch_row"));
    return fn;
}

void record(int priority, const char* fmt, va_list ap) __attribute__((format(printf, 2, 0)));
void record(int priority, const char* fmt, va_list ap) {
    if (g_paused) return;
    char buf[65536];
    vsnprintf(buf, sizeof buf, fmt, ap);
    std::lock_guard<std::mutex> lock(g_mutex);
    g_logs.push_back({priority, buf, g_ident, g_option, g_facility, g_opened});
}

MYSQL* g_db = nullptr;

void own_connect() {
    if (g_db != nullptr) {
        mysql_close(g_db);
    }
    g_db = mysql_init(nullptr);
    t_own = true;
    const char* port = getenv("MYSQL_TCP_PORT");
    if (mysql_real_connect(g_db, "127.0.0.1", "root", "582914", "firewall",
                           port ? static_cast<unsigned>(atoi(port)) : 0, nullptr, 0) == nullptr) {
        ADD_FAILURE() << "test connection: " << mysql_error(g_db);
    }
    t_own = false;
}

MYSQL* own() {
    if (g_db == nullptr) {
        own_connect();
    }
    return g_db;
}

bool own_query(const std::string& sql) {
    t_own = true;
    int rc = real_query()(own(), sql.c_str());
    if (rc != 0 && (mysql_errno(g_db) == CR_SERVER_GONE_ERROR || mysql_errno(g_db) == CR_SERVER_LOST)) {
        own_connect();
        rc = real_query()(g_db, sql.c_str());
    }
    t_own = false;
    if (rc != 0) {
        ADD_FAILURE() << "test statement failed: " << sql << ": " << mysql_error(g_db);
    }
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
    return real_query()(mysql, q);
}

extern "C" int mysql_options(MYSQL* mysql, enum mysql_option option, const void* arg) {
    static options_fn real = reinterpret_cast<options_fn>(dlsym(RTLD_NEXT, "mysql_options"));
    if (!t_own && !g_paused) {
        std::lock_guard<std::mutex> lock(g_mutex);
        if (g_fail_options_at > 0 && --g_fail_options_at == 0) {
            return 1;
        }
        unsigned int value = 0;
        if (arg != nullptr) {
            memcpy(&value, arg, sizeof value);
        }
        g_options.emplace_back(static_cast<int>(option), value);
    }
    return real(mysql, option, arg);
}

extern "C" MYSQL_ROW mysql_fetch_row(MYSQL_RES* res) {
    {
        std::lock_guard<std::mutex> lock(g_mutex);
        if (!t_own && g_fail_fetch_at > 0 && --g_fail_fetch_at == 0) {
            return nullptr;
        }
    }
    return real_fetch()(res);
}

extern "C" void openlog(const char* ident, int option, int facility) {
    std::lock_guard<std::mutex> lock(g_mutex);
    ++g_open;
    g_opened = true;
    g_ident = ident ? ident : "";
    g_option = option;
    g_facility = facility;
}

extern "C" void closelog(void) {
    std::lock_guard<std::mutex> lock(g_mutex);
    ++g_close;
    g_opened = false;
}

extern "C" void vsyslog(int priority, const char* fmt, va_list ap) { record(priority, fmt, ap); }

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

extern "C" void __vsyslog_chk(int priority, int, const char* fmt, va_list ap) { record(priority, fmt, ap); }

namespace testbed {

std::vector<std::string> statements() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_statements;
}

std::vector<LogRecord> logs() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_logs;
}

int open_count() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_open;
}

int close_count() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_close;
}

std::vector<std::pair<int, unsigned int>> options() {
    std::lock_guard<std::mutex> lock(g_mutex);
    return g_options;
}

void clear() {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_options.clear();
    g_statements.clear();
    g_logs.clear();
    g_open = g_close = 0;
}

void fail_options_at(int n) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_fail_options_at = n;
}

void fail_fetch_at(int n) {
    std::lock_guard<std::mutex> lock(g_mutex);
    g_fail_fetch_at = n;
}

void exec(const std::string& sql) { own_query(sql); }

std::vector<Row> rows(const std::string& sql) {
    std::vector<Row> out;
    if (!own_query(sql)) {
        return out;
    }
    t_own = true;
    MYSQL_RES* res = mysql_store_result(g_db);
    if (res != nullptr) {
        const unsigned int n = mysql_num_fields(res);
        while (MYSQL_ROW row = real_fetch()(res)) {
            Row r;
            for (unsigned int i = 0; i < n; ++i) {
                r.push_back(row[i] ? Cell(row[i]) : std::nullopt);
            }
            out.push_back(r);
        }
        mysql_free_result(res);
    }
    t_own = false;
    return out;
}

Cell value(const std::string& sql) {
    std::vector<Row> r = rows(sql);
    if (r.empty() || r[0].empty()) {
        return std::nullopt;
    }
    return r[0][0];
}

long count(const std::string& table, const std::string& where) {
    Cell c = value("select count(*) from " + table + (where.empty() ? "" : " where " + where));
    return c ? atol(c->c_str()) : -1;
}

void truncate(const std::vector<std::string>& tables) {
    for (const std::string& t : tables) {
        exec("truncate table " + t);
    }
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
        t_own = true;
        real_query()(own(), ("KILL " + *r[0]).c_str());  // one may have gone already
        t_own = false;
    }
}

long leaked_bytes(const std::function<void()>& call) {
    g_paused = true;
    const long before = static_cast<long>(__sanitizer_get_current_allocated_bytes());
    {
        Unreported unreported;
        call();
    }
    const long after = static_cast<long>(__sanitizer_get_current_allocated_bytes());
    g_paused = false;
    return after - before;
}

std::string strip_site(const std::string& text, std::string* file) {
    // "path:line " then the message
    const size_t colon = text.find(':');
    if (colon == std::string::npos) {
        return text;
    }
    size_t i = colon + 1;
    while (i < text.size() && isdigit(static_cast<unsigned char>(text[i]))) {
        ++i;
    }
    if (i == colon + 1 || i >= text.size() || text[i] != ' ') {
        return text;
    }
    if (file != nullptr) {
        *file = text.substr(0, colon);
    }
    return text.substr(i + 1);
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
    util_db_test_fail_alloc_at = 0;
    fail_fetch_at(0);
}

void LibraryTest::log_on(int level) {
    util_db_log_switch = 1;
    util_db_log_level = level;
}

void LibraryTest::log_off() {
    util_db_log_switch = 0;
    util_db_log_level = 0;
}

std::vector<std::string> LibraryTest::texts(int priority) const {
    std::vector<std::string> out;
    for (const LogRecord& r : logs()) {
        if (r.priority == priority) {
            out.push_back(priority == 7 ? strip_site(r.text) : r.text);
        }
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
    for (const std::string& t : texts(priority)) {
        if (t == text) {
            return true;
        }
    }
    return false;
}

}  // namespace testbed
