// A client library without a server, for fuzzing: the library's statements
// are checked and dropped, and every result set is made from the fuzzer's
// input. Also swallows the system log, formatting each record so that the
// sanitizers see every argument.
#include "seam.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace {

constexpr size_t kLongestStatement = 1151;  // the largest statement buffer, less its terminator
constexpr int kFields = 40;                 // wider than any row the library reads by position

struct FakeResult {
    std::vector<std::vector<std::optional<std::string>>> cells;
    std::vector<std::vector<char*>> rows;
    size_t next = 0;
    bool freed = false;
};

FuzzedDataProvider* g_input = nullptr;
std::vector<std::unique_ptr<FakeResult>> g_results;  // freed at the end of each input
bool g_connect_fails = false;

FakeResult* fake(MYSQL_RES* res) { return reinterpret_cast<FakeResult*>(res); }

}  // namespace

namespace seam {

void begin(FuzzedDataProvider& input) {
    g_input = &input;
    g_connect_fails = input.ConsumeIntegralInRange<int>(0, 15) == 0;
}

void end() {
    g_input = nullptr;
    g_results.clear();
}

}  // namespace seam

extern "C" {

MYSQL* mysql_init(MYSQL* mysql) { return mysql; }
int mysql_options(MYSQL*, enum mysql_option, const void*) { return 0; }
MYSQL* mysql_real_connect(MYSQL* mysql, const char*, const char*, const char*, const char*, unsigned int,
                          const char*, unsigned long) {
    return g_connect_fails ? nullptr : mysql;
}
void mysql_close(MYSQL*) {}
int mysql_ping(MYSQL*) { return g_input != nullptr && g_input->ConsumeBool() ? 1 : 0; }
const char* mysql_error(MYSQL*) { return "fuzzed failure"; }
unsigned int mysql_field_count(MYSQL*) { return 0; }

int mysql_query(MYSQL*, const char* q) {
    // Every statement is terminated within the largest statement buffer.
    if (q == nullptr || strnlen(q, kLongestStatement + 1) > kLongestStatement) {
        __builtin_trap();
    }
    return g_input != nullptr && g_input->ConsumeIntegralInRange<int>(0, 15) == 0 ? 1 : 0;
}

MYSQL_RES* mysql_store_result(MYSQL*) {
    if (g_input == nullptr || g_input->ConsumeIntegralInRange<int>(0, 15) == 0) {
        return nullptr;
    }
    auto r = std::make_unique<FakeResult>();
    const int rows = g_input->ConsumeIntegralInRange<int>(0, 3);
    r->cells.resize(static_cast<size_t>(rows));
    for (auto& row : r->cells) {
        for (int f = 0; f < kFields; ++f) {
            // NULL anywhere but in the first column, which every look-up of the
            // library selects from a NOT NULL column (a key or an id).
            if (f > 0 && g_input->ConsumeIntegralInRange<int>(0, 7) == 0) {
                row.emplace_back(std::nullopt);
            } else {
                row.emplace_back(g_input->ConsumeRandomLengthString(4096));
            }
        }
    }
    for (auto& row : r->cells) {
        std::vector<char*> ptrs;
        for (auto& c : row) {
            ptrs.push_back(c ? c->data() : nullptr);
        }
        r->rows.push_back(std::move(ptrs));
    }
    g_results.push_back(std::move(r));
    return reinterpret_cast<MYSQL_RES*>(g_results.back().get());
}

my_ulonglong mysql_num_rows(MYSQL_RES* res) { return fake(res)->cells.size(); }
unsigned int mysql_num_fields(MYSQL_RES*) { return kFields; }

MYSQL_ROW mysql_fetch_row(MYSQL_RES* res) {
    FakeResult* r = fake(res);
    if (r->freed) {
        __builtin_trap();  // used after mysql_free_result
    }
    // Now and then the fetch fails although rows were counted.
    if (r->next >= r->rows.size() || (g_input != nullptr && g_input->ConsumeIntegralInRange<int>(0, 31) == 0)) {
        return nullptr;
    }
    return r->rows[r->next++].data();
}

void mysql_free_result(MYSQL_RES* res) {
    if (res == nullptr) {
        return;
    }
    if (fake(res)->freed) {
        __builtin_trap();  // freed twice
    }
    fake(res)->freed = true;
}

// The system log: formatted and dropped.
void openlog(const char*, int, int) {}
void closelog(void) {}
void vsyslog(int, const char* fmt, va_list ap) {
    char buf[8192];
    vsnprintf(buf, sizeof buf, fmt, ap);
}
void syslog(int priority, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsyslog(priority, fmt, ap);
    va_end(ap);
}
void __syslog_chk(int priority, int, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsyslog(priority, fmt, ap);
    va_end(ap);
}
void __vsyslog_chk(int priority, int, const char* fmt, va_list ap) { vsyslog(priority, fmt, ap); }

}  // extern "C"
