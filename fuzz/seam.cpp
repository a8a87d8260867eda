// A client library without a server, for fuzzing: the library's statements
// are checked and dropped, and every result set is made from the fuzzer's
// input, its rows exactly as wide as the statement selects (the columns named,
// or every column of the tables of "select *", as schema/firewall.sql has
// them), any cell that may hold NULL, the first included, NULL now and then. Also swallows the system log, formatting
// each record so that the sanitizers see every argument.
#include "seam.h"

#include <stdarg.h>
#include <stdio.h>
#include <string.h>

#include <ctype.h>

#include <algorithm>
#include <fstream>
#include <map>
#include <memory>
#include <optional>
#include <sstream>
#include <string>
#include <vector>

namespace {

constexpr size_t kLongestStatement = 1151;  // the largest statement buffer, less its terminator

struct FakeResult {
    std::vector<std::vector<std::optional<std::string>>> cells;
    std::vector<std::vector<char*>> rows;
    std::vector<bool> nullable{true};  // per cell
    size_t next = 0;
    bool freed = false;
};

FuzzedDataProvider* g_input = nullptr;
std::vector<std::unique_ptr<FakeResult>> g_results;  // freed at the end of each input
bool g_connect_fails = false;
bool g_any_length = false;  // statements of the caller's own (db_query, db_store_result)
std::string g_last;         // the last statement

FakeResult* fake(MYSQL_RES* res) { return reinterpret_cast<FakeResult*>(res); }

std::string lower(std::string s) {
    for (char& c : s) c = static_cast<char>(tolower(static_cast<unsigned char>(c)));
    return s;
}

// The columns of each table, as the reference schema declares them: name and
// whether it may hold NULL.
using Columns = std::vector<std::pair<std::string, bool>>;
const std::map<std::string, Columns>& schema() {
    static const std::map<std::string, Columns> tables = [] {
        std::map<std::string, Columns> t;
        std::ifstream in(FUZZ_SCHEMA);
        std::string line, table;
        while (std::getline(in, line)) {
            std::istringstream words(line);
            std::string first, second, third;
            words >> first >> second >> third;
            if (first == "CREATE" && second == "TABLE") {
                table = lower(third);
            } else if (!table.empty() && line[0] == ')') {
                table.clear();
            } else if (!table.empty() && !first.empty() && first != "KEY" && first != "PRIMARY" && first != "UNIQUE") {
                t[table].emplace_back(lower(first), line.find("NOT NULL") == std::string::npos);
            }
        }
        if (t.empty()) __builtin_trap();  // no schema: the rows would be wrong
        return t;
    }();
    return tables;
}

std::string trim(std::string s) {
    s.erase(0, s.find_first_not_of(' '));
    s.erase(s.find_last_not_of(' ') + 1);
    return s;
}

// The cells of a row of what `sql` selects, each true when it may be NULL:
// the columns named (split at commas outside parentheses), or every column of
// the tables of "select *". A column the schema declares NOT NULL never is;
// any other expression may be. One nullable cell for anything else.
std::vector<bool> shape(const std::string& sql) {
    const std::string s = lower(sql);
    const size_t from = s.find(" from ");
    if (s.compare(0, 7, "select ") != 0 || from == std::string::npos) return {true};
    std::string rest = s.substr(from + 6);
    rest = rest.substr(0, std::min(rest.find(" where"), rest.find(';')));
    std::vector<const Columns*> tables;
    std::istringstream names(rest);
    for (std::string name; std::getline(names, name, ',');) {
        const auto t = schema().find(trim(name));
        if (t != schema().end()) tables.push_back(&t->second);
    }
    std::vector<bool> cells;
    std::vector<std::string> list(1);
    int depth = 0;
    for (char c : s.substr(7, from - 7)) {
        depth += c == '(' ? 1 : c == ')' ? -1 : 0;
        if (c == ',' && depth == 0) list.emplace_back(); else list.back() += c;
    }
    for (std::string item : list) {
        item = trim(item);
        if (item == "*") {
            for (const Columns* t : tables) for (const auto& col : *t) cells.push_back(col.second);
            continue;
        }
        item = item.substr(item.find('.') == std::string::npos ? 0 : item.find('.') + 1);
        bool nullable = true;
        for (const Columns* t : tables) {
            for (const auto& col : *t) nullable = nullable && !(col.first == item && !col.second);
        }
        cells.push_back(nullable);
    }
    return cells;
}

}  // namespace

namespace seam {

void begin(FuzzedDataProvider& input, bool any_length) {
    g_input = &input;
    g_any_length = any_length;
    g_connect_fails = input.ConsumeIntegralInRange<int>(0, 15) == 0;
}

int end() {
    g_input = nullptr;
    int unfreed = 0;
    for (const auto& r : g_results) unfreed += !r->freed;
    g_results.clear();
    return unfreed;
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
unsigned int g_errno = 0;
unsigned int mysql_errno(MYSQL*) { return g_errno; }
// The client's escaping in its default mode: a backslash before each special character.
unsigned long mysql_real_escape_string(MYSQL*, char* to, const char* from, unsigned long length) {
    char* out = to;
    for (unsigned long i = 0; i < length; ++i) {
        const char c = from[i];
        if (c == '\'' || c == '\\' || c == '"' || c == '\n' || c == '\r' || c == '\0' || c == '\032') *out++ = '\\';
        *out++ = c == '\n' ? 'n' : c == '\r' ? 'r' : c == '\0' ? '0' : c == '\032' ? 'Z' : c;
    }
    *out = '\0';
    return static_cast<unsigned long>(out - to);
}
unsigned int mysql_field_count(MYSQL*) { return 0; }

int mysql_query(MYSQL*, const char* q) {
    // Every statement of a table function is terminated within the largest statement buffer.
    if (q == nullptr || (!g_any_length && strnlen(q, kLongestStatement + 1) > kLongestStatement)) {
        __builtin_trap();
    }
    g_last = q;
    g_errno = 0;
    if (g_input != nullptr && g_input->ConsumeIntegralInRange<int>(0, 15) == 0) {
        g_errno = g_input->ConsumeBool() ? 2013 : 1064;  // the connection lost, or the statement refused
        return 1;
    }
    return 0;
}

MYSQL_RES* mysql_store_result(MYSQL*) {
    if (g_input == nullptr || g_input->ConsumeIntegralInRange<int>(0, 15) == 0) {
        return nullptr;
    }
    auto r = std::make_unique<FakeResult>();
    r->nullable = shape(g_last);
    const int rows = g_input->ConsumeIntegralInRange<int>(0, 3);
    r->cells.resize(static_cast<size_t>(rows));
    for (auto& row : r->cells) {
        for (const bool nullable : r->nullable) {
            if (nullable && g_input->ConsumeIntegralInRange<int>(0, 7) == 0) {
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
unsigned int mysql_num_fields(MYSQL_RES* res) { return static_cast<unsigned int>(fake(res)->nullable.size()); }

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
