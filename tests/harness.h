// Test bed: observes what the library really does.
//  - every statement it hands to the client (mysql_query interposed, forwarded
//    to the real client library);
//  - every system-log record it writes (openlog/syslog/vsyslog/__syslog_chk/
//    closelog interposed; nothing reaches the real system log);
//  - the rows in the database, read through a separate connection that is
//    never recorded.
// The server is the private one started by scripts/with-server.sh
// (MYSQL_TCP_PORT, UTIL_DB_SERVER_DIR).
#pragma once

#include <gtest/gtest.h>

#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "util-database.h"
#include "util-db-internal.h"

// The leak checker's pause; weak, so that the test build without sanitizers
// (run under valgrind) links too.
extern "C" void __lsan_disable(void) __attribute__((weak));
extern "C" void __lsan_enable(void) __attribute__((weak));

namespace testbed {

struct LogRecord {
    int priority;
    std::string text;      // the formatted text handed to syslog
    std::string ident;     // openlog state when it was written
    int option;
    int facility;
    bool opened;           // inside exactly one openlog not yet closed
};

using Cell = std::optional<std::string>;
using Row = std::vector<Cell>;

// Captured traffic since the last clear().
std::vector<std::string> statements();
std::vector<LogRecord> logs();
// mysql_options calls (the library's and the client library's own): (option
// number, the first four bytes its argument points to, as an unsigned int).
std::vector<std::pair<int, unsigned int>> options();
void clear();

// Makes the Nth mysql_fetch_row (mysql_options) call from now fail (1 = the next).
void fail_fetch_at(int n);
void fail_options_at(int n);

// The separate connection.
void exec(const std::string& sql);
std::vector<Row> rows(const std::string& sql);
Cell value(const std::string& sql);        // first cell of the first row (nullopt: NULL or no row)
long count(const std::string& table, const std::string& where = "");
void truncate(const std::vector<std::string>& tables);

// The private server: stop and start it again (same port and data); its
// process id; KILL every connection but the harness's own (the library's).
void server_stop();
void server_start();
long server_pid();
void kill_connections();

// Heap bytes that call() leaves allocated; nothing is captured meanwhile. The
// blocks it leaves are kept out of the exit-time leak report: assert the amount.
long leaked_bytes(const std::function<void()>& call);
// Keeps what is allocated in its scope out of the exit-time leak report (for a
// call whose deliberate leak another case measures).
struct Unreported {
    Unreported() { if (__lsan_disable != nullptr) __lsan_disable(); }
    ~Unreported() { if (__lsan_enable != nullptr) __lsan_enable(); }
};

#ifdef UTIL_DB_SAFE
constexpr bool kSafe = true;  // the safe profile: no deliberate leak, escaping, refusal of long statements
#else
constexpr bool kSafe = false;
#endif

// Removes the "file:line " prefix of a debug record; returns the file part in *file.
std::string strip_site(const std::string& text, std::string* file = nullptr);

// Fails the Nth library allocation from now (1 = the next) while alive.
struct FailAlloc {
    explicit FailAlloc(int n) { util_db_test_fail_alloc_at = n; }
    ~FailAlloc() { util_db_test_fail_alloc_at = 0; }
};

// Base fixture: a connected handle, logging on at level 7, capture cleared.
class LibraryTest : public ::testing::Test {
protected:
    void SetUp() override;
    void TearDown() override;

    void log_on(int level = 7) { util_db_log_switch = 1, util_db_log_level = level; }
    void log_off() { util_db_log_switch = 0, util_db_log_level = 0; }

    // Statements the library sent since the last clear.
    std::vector<std::string> sent() const { return statements(); }
    // Texts logged at a priority (debug texts without their site prefix).
    std::vector<std::string> texts(int priority) const;
    // Every record as "P:text" (debug texts without their site prefix), in order.
    std::vector<std::string> records() const;
    bool logged(int priority, const std::string& text) const;

    db_handle_t h{};
};

}  // namespace testbed
