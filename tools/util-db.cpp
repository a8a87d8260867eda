// util-db: calls the library's exported table functions from the command line.
//
//   util-db [--json] [--trace] [--log LEVEL] call FUNCTION ARG...
//   util-db list
//   util-db dump TABLE
//
// Strings are given as they are, NULL as "-", integers in decimal; a caller
// buffer (marked "(out)" in the list) as "-" or its size; a record as
// field=value pairs. The connection is the library's own (127.0.0.1, database
// "firewall"); MYSQL_TCP_PORT reaches another port.
#include <dlfcn.h>
#include <errno.h>
#include <stdarg.h>
#include <syslog.h>

#include "cli.h"

namespace {

bool g_trace = false;
bool g_log = false;

const char* kUsage =
    "usage: util-db [--json] [--trace] [--log LEVEL] call FUNCTION ARG...\n"
    "       util-db list\n"
    "       util-db dump TABLE\n"
    "Arguments: strings as they are, NULL as '-', integers in decimal, a caller\n"
    "buffer (out) as '-' or its size in bytes, a record as field=value pairs.\n"
    "--trace prints the SQL the library sends, --log LEVEL its log records up\n"
    "to that syslog priority (7: all), both on standard error.\n";

void escape_json(const std::string& s, std::string& out) {
    out += '"';
    for (unsigned char c : s) {
        switch (c) {
            case '"': out += "\\\""; break;
            case '\\': out += "\\\\"; break;
            case '\n': out += "\\n"; break;
            case '\t': out += "\\t"; break;
            case '\r': out += "\\r"; break;
            default:
                if (c < 0x20) {
                    char buf[8];
                    snprintf(buf, sizeof buf, "\\u%04x", c);
                    out += buf;
                } else {
                    out += static_cast<char>(c);
                }
        }
    }
    out += '"';
}

int run_dump(db_handle_t* h, const std::string& table) {
    for (unsigned char c : table) {
        if (!isalnum(c) && c != '_') {
            fprintf(stderr, "util-db: bad table name '%s'\n", table.c_str());
            return 2;
        }
    }
    const std::string sql = "select * from " + table;
    MYSQL_RES* res = static_cast<MYSQL_RES*>(db_store_result(h, sql.c_str()));
    if (res == nullptr) {
        fprintf(stderr, "util-db: cannot read table %s: %s\n", table.c_str(),
                mysql_error(static_cast<MYSQL*>(h->conn)));
        return 1;
    }
    const unsigned int n = mysql_num_fields(res);
    MYSQL_FIELD* fields = mysql_fetch_fields(res);
    std::vector<std::vector<std::string>> cells(1);
    for (unsigned int i = 0; i < n; ++i) {
        cells[0].push_back(fields[i].name);
    }
    while (MYSQL_ROW row = mysql_fetch_row(res)) {
        cells.emplace_back();
        for (unsigned int i = 0; i < n; ++i) {
            cells.back().push_back(row[i] ? row[i] : "NULL");
        }
    }
    mysql_free_result(res);
    std::vector<size_t> width(n, 0);
    for (const auto& r : cells) {
        for (unsigned int i = 0; i < n; ++i) {
            width[i] = std::max(width[i], r[i].size());
        }
    }
    for (size_t k = 0; k < cells.size(); ++k) {
        for (unsigned int i = 0; i < n; ++i) {
            printf("%-*s%s", static_cast<int>(width[i]), cells[k][i].c_str(), i + 1 < n ? "  " : "\n");
        }
    }
    printf("(%zu row%s)\n", cells.size() - 1, cells.size() == 2 ? "" : "s");
    return 0;
}

}  // namespace

// ---- The tool shows what the library sends and logs (interposed) ----

extern "C" int mysql_query(MYSQL* mysql, const char* q) {
    using fn_t = int (*)(MYSQL*, const char*);
    static fn_t real = reinterpret_cast<fn_t>(dlsym(RTLD_NEXT, "mysql_query"));
    if (g_trace) {
        fprintf(stderr, "SQL: %s\n", q);
    }
    return real(mysql, q);
}

extern "C" void openlog(const char*, int, int) {}
extern "C" void closelog(void) {}

extern "C" void vsyslog(int priority, const char* fmt, va_list ap) {
    if (!g_log) {
        return;
    }
    char buf[4096];
    vsnprintf(buf, sizeof buf, fmt, ap);
    size_t len = strlen(buf);
    while (len > 0 && buf[len - 1] == '\n') {
        buf[--len] = '\0';
    }
    fprintf(stderr, "LOG %d: %s\n", priority, buf);
}

extern "C" void syslog(int priority, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsyslog(priority, fmt, ap);
    va_end(ap);
}

extern "C" void __syslog_chk(int priority, int, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsyslog(priority, fmt, ap);
    va_end(ap);
}

namespace cli {

bool parse_int(const std::string& text, int* value) {
    if (text.empty()) {
        return false;
    }
    errno = 0;
    char* end = nullptr;
    const long v = strtol(text.c_str(), &end, 0);
    if (errno != 0 || *end != '\0' || v < INT32_MIN || v > INT32_MAX) {
        return false;
    }
    *value = static_cast<int>(v);
    return true;
}

std::string to_json(const Value& v) {
    std::string out;
    switch (v.kind) {
        case Value::Null: return "null";
        case Value::Int: return std::to_string(v.i);
        case Value::Str: escape_json(v.s, out); return out;
        case Value::Object:
            out = "{";
            for (size_t k = 0; k < v.fields.size(); ++k) {
                if (k) out += ",";
                escape_json(v.fields[k].first, out);
                out += ":" + to_json(v.fields[k].second);
            }
            return out + "}";
        case Value::Array:
            out = "[";
            for (size_t k = 0; k < v.items.size(); ++k) {
                out += (k ? "," : "") + to_json(v.items[k]);
            }
            return out + "]";
    }
    return out;
}

std::string to_text(const Value& v, int indent) {
    const std::string pad(static_cast<size_t>(indent), ' ');
    switch (v.kind) {
        case Value::Null: return "NULL";
        case Value::Int: return std::to_string(v.i);
        case Value::Str: {
            std::string out;
            escape_json(v.s, out);
            return out;
        }
        case Value::Object: {
            std::string out;
            for (const auto& f : v.fields) {
                const bool nested = f.second.kind == Value::Object || f.second.kind == Value::Array;
                out += pad + f.first + ":" + (nested ? "\n" : " ") + to_text(f.second, indent + 2) + (nested ? "" : "\n");
            }
            return out;
        }
        case Value::Array: {
            if (v.items.empty()) {
                return pad + "(none)\n";
            }
            std::string out;
            for (size_t k = 0; k < v.items.size(); ++k) {
                out += pad + "[" + std::to_string(k) + "]\n" + to_text(v.items[k], indent + 2);
            }
            return out;
        }
    }
    return "";
}

}  // namespace cli

int main(int argc, char** argv) {
    bool json = false;
    int i = 1;
    for (; i < argc && argv[i][0] == '-' && argv[i][1] == '-'; ++i) {
        const std::string opt = argv[i];
        if (opt == "--json") {
            json = true;
        } else if (opt == "--trace") {
            g_trace = true;
        } else if (opt == "--log" && i + 1 < argc) {
            int level = 0;
            if (!cli::parse_int(argv[++i], &level)) {
                fprintf(stderr, "util-db: --log takes a priority from 0 to 7\n%s", kUsage);
                return 2;
            }
            g_log = true;
            util_db_log_switch = 1;
            util_db_log_level = level;
        } else if (opt == "--help") {
            fputs(kUsage, stdout);
            return 0;
        } else {
            fprintf(stderr, "util-db: unknown option %s\n%s", opt.c_str(), kUsage);
            return 2;
        }
    }
    if (i >= argc) {
        fputs(kUsage, stderr);
        return 2;
    }
    const std::string command = argv[i++];
    if (command == "list") {
        for (const cli::Entry& e : cli::functions()) {
            printf("%s\n", e.signature.c_str());
        }
        return 0;
    }
    if (command != "call" && command != "dump") {
        fprintf(stderr, "util-db: unknown command '%s'\n%s", command.c_str(), kUsage);
        return 2;
    }
    if (i >= argc) {
        fprintf(stderr, "util-db: %s needs a %s\n", command.c_str(), command == "call" ? "function name" : "table name");
        return 2;
    }
    const std::string target = argv[i++];
    const cli::Entry* found = nullptr;
    if (command == "call") {
        for (const cli::Entry& e : cli::functions()) {
            if (e.name == target) {
                found = &e;
            }
        }
        if (found == nullptr) {
            fprintf(stderr, "util-db: no function '%s' (util-db list shows them)\n", target.c_str());
            return 2;
        }
    }

    db_handle_t handle;
    memset(&handle, 0, sizeof handle);
    if (util_db_init(&handle) == nullptr || util_db_connect(&handle) == nullptr) {
        fprintf(stderr, "util-db: cannot connect to the configuration database (127.0.0.1, database firewall%s%s)\n",
                getenv("MYSQL_TCP_PORT") ? ", port " : "", getenv("MYSQL_TCP_PORT") ? getenv("MYSQL_TCP_PORT") : "");
        util_db_deinit(&handle);
        return 1;
    }
    int status = 0;
    if (command == "dump") {
        status = run_dump(&handle, target);
    } else {
        cli::Call call;
        call.handle = &handle;
        call.args.assign(argv + i, argv + argc);
        cli::Value result = found->invoke(*found, call);
        if (!call.error.empty()) {
            fprintf(stderr, "util-db: %s: %s\n  %s\n", found->name.c_str(), call.error.c_str(), found->signature.c_str());
            status = 2;
        } else if (json) {
            cli::Value doc = cli::Value::object();
            doc.add("function", cli::Value::string(found->name.c_str()));
            doc.add("result", result);
            doc.add("outputs", call.outputs);
            printf("%s\n", cli::to_json(doc).c_str());
        } else {
            const bool nested = result.kind == cli::Value::Array;
            printf("result:%s%s", nested ? "\n" : " ", cli::to_text(result, 2).c_str());
            if (!nested) {
                printf("\n");
            }
            printf("%s", cli::to_text(call.outputs, 0).c_str());
        }
    }
    util_db_disconnect(&handle);
    util_db_deinit(&handle);
    return status;
}
