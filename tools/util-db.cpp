// util-db: operates the appliance's configuration database from the command
// line: calls the library's exported table functions, and works on the whole
// configuration (export, import, diff, check), in batches and on the node's
// replication state. `util-db --help` and `util-db COMMAND --help` tell how.
//
// Exit status: 0 success; 1 a called function reports failure, a diff finds
// differences, check finds dangling references or an operation fails; 2 a
// usage error; 3 the database cannot be reached.
#include <dlfcn.h>
#include <stdarg.h>
#include <syslog.h>

#include <CLI/CLI.hpp>
#include <fstream>
#include <iostream>
#include <sstream>

#include "cli.h"
#include "config.h"

#ifndef UTIL_DB_VERSION
#define UTIL_DB_VERSION "unknown"
#endif

namespace {

enum Exit { kOk = 0, kFailed = 1, kUsage = 2, kUnreachable = 3 };

bool g_trace = false;
int g_log = -1;                        // --log LEVEL: records shown live, up to LEVEL
std::vector<std::string> g_reasons;    // the priority-3 records of the current call

// The library handle; its MySQL connection is also the tool's own.
struct Session {
    db_handle_t handle{};
    bool ready = false;

    MYSQL* conn() { return static_cast<MYSQL*>(handle.conn); }

    // Connects once; on failure says where it tried and how to reach another port.
    bool connect() {
        if (ready) {
            return true;
        }
        if (util_db_init(&handle) != nullptr && util_db_connect(&handle) != nullptr) {
            ready = true;
            return true;
        }
        const char* port = getenv("MYSQL_TCP_PORT");
        fprintf(stderr,
                "util-db: cannot connect to the configuration database at 127.0.0.1 port %s (user root, database "
                "firewall): %s\n"
                "util-db: the port is taken from MYSQL_TCP_PORT or --port N%s\n",
                port ? port : "3306 (the client's default)", handle.conn ? mysql_error(conn()) : "no memory",
                port ? "" : "; neither is set");
        if (handle.conn != nullptr) {
            util_db_disconnect(&handle);
        }
        util_db_deinit(&handle);
        return false;
    }
    ~Session() {
        if (ready) {
            util_db_disconnect(&handle);
            util_db_deinit(&handle);
        }
    }
};

int finish(const config::Status& s) {
    if (s.code != 0 && !s.reason.empty()) {
        fprintf(stderr, "util-db: %s\n", s.reason.c_str());
    }
    return s.code;
}

// ---- Printing a call's result as text ----

std::string to_text(const cli::Value& v, int indent) {
    const std::string pad(static_cast<size_t>(indent), ' ');
    if (v.is_null()) {
        return "NULL";
    }
    if (v.is_object()) {
        std::string out;
        for (const auto& [k, f] : v.items()) {
            const bool nested = f.is_structured();
            out += pad + k + ":" + (nested ? "\n" : " ") + to_text(f, indent + 2) + (nested ? "" : "\n");
        }
        return out;
    }
    if (v.is_array()) {
        if (v.empty()) {
            return pad + "(none)\n";
        }
        std::string out;
        for (size_t k = 0; k < v.size(); ++k) {
            out += pad + "[" + std::to_string(k) + "]\n" + to_text(v[k], indent + 2);
        }
        return out;
    }
    return v.dump(-1, ' ', false, cli::Value::error_handler_t::replace);
}

int run_call(Session& s, const std::vector<std::string>& words, bool json) {
    const cli::Entry* found = nullptr;
    for (const cli::Entry& e : cli::functions()) {
        if (e.name == words[0]) {
            found = &e;
        }
    }
    if (found == nullptr) {
        fprintf(stderr, "util-db: no function '%s' (util-db list shows them)\n", words[0].c_str());
        return kUsage;
    }
    if (!s.connect()) {
        return kUnreachable;
    }
    cli::Call call;
    call.handle = &s.handle;
    call.args.assign(words.begin() + 1, words.end());
    g_reasons.clear();
    const cli::Value result = found->invoke(*found, call);
    if (!call.error.empty()) {
        fprintf(stderr, "util-db: %s: %s\n  %s\n", found->name.c_str(), call.error.c_str(), found->signature.c_str());
        return kUsage;
    }
    if (json) {
        const cli::Value doc = {{"function", found->name}, {"result", result}, {"outputs", call.outputs}};
        printf("%s\n", doc.dump(-1, ' ', false, cli::Value::error_handler_t::replace).c_str());
    } else {
        const bool nested = result.is_array();
        printf("result:%s%s%s", nested ? "\n" : " ", to_text(result, 2).c_str(), nested ? "" : "\n");
        printf("%s", to_text(call.outputs, 0).c_str());
    }
    if (!call.failed) {
        return kOk;
    }
    std::string why;
    for (const std::string& r : g_reasons) {
        why += (why.empty() ? "" : "; ") + r;
    }
    fprintf(stderr, "util-db: %s failed (%s): %s\n", found->name.c_str(), result.is_null() ? "NULL" : "-1",
            why.empty() ? "the library logged no reason" : why.c_str());
    return kFailed;
}

int run_list(const std::string& word, bool json) {
    auto lower = [](std::string t) {
        std::transform(t.begin(), t.end(), t.begin(), ::tolower);
        return t;
    };
    cli::Value out = cli::Value::array();
    size_t shown = 0;
    for (const cli::Entry& e : cli::functions()) {
        if (!word.empty() && lower(e.name + " " + e.description).find(lower(word)) == std::string::npos) {
            continue;
        }
        ++shown;
        if (json) {
            out.push_back({{"name", e.name}, {"signature", e.signature}, {"description", e.description}});
        } else {
            printf("%s\n    %s\n", e.signature.c_str(), e.description.c_str());
        }
    }
    if (json) {
        printf("%s\n", out.dump(2).c_str());
    }
    if (shown == 0) {
        fprintf(stderr, "util-db: no function matches '%s'\n", word.c_str());
        return kFailed;
    }
    return kOk;
}

int run_export(Session& s, const std::string& output) {
    if (!s.connect()) {
        return kUnreachable;
    }
    config::Json doc;
    const config::Status st = config::export_all(s.conn(), &doc);
    if (st.code) {
        return finish(st);
    }
    const std::string text = doc.dump(2, ' ', false, config::Json::error_handler_t::replace) + "\n";
    if (output.empty() || output == "-") {
        fputs(text.c_str(), stdout);
        return kOk;
    }
    std::ofstream out(output, std::ios::binary | std::ios::trunc);
    out << text;
    out.close();
    if (!out) {
        fprintf(stderr, "util-db: cannot write %s\n", output.c_str());
        return kFailed;
    }
    return kOk;
}

// Splits a batch line into words: blanks separate, '...' and "..." quote,
// a backslash takes the next character as it is.
bool split_words(const std::string& line, std::vector<std::string>* words) {
    std::string w;
    bool in_word = false;
    char quote = 0;
    for (size_t i = 0; i < line.size(); ++i) {
        const char c = line[i];
        if (quote) {
            if (c == quote) {
                quote = 0;
            } else {
                w += c;
            }
        } else if (c == '\'' || c == '"') {
            quote = c;
            in_word = true;
        } else if (c == '\\' && i + 1 < line.size()) {
            w += line[++i];
            in_word = true;
        } else if (c == ' ' || c == '\t' || c == '\r') {
            if (in_word) {
                words->push_back(w);
            }
            w.clear();
            in_word = false;
        } else {
            w += c;
            in_word = true;
        }
    }
    if (in_word) {
        words->push_back(w);
    }
    return quote == 0;
}

int run_words(Session& s, std::vector<std::string> words, bool in_batch, bool json);

int run_batch(Session& s, const std::string& path, bool atomic, bool json) {
    bool readable = false;
    std::stringstream ss(config::read_input(path, &readable));
    if (!readable) {
        fprintf(stderr, "util-db: cannot read %s\n", path.c_str());
        return kUsage;
    }
    if (!s.connect()) {
        return kUnreachable;
    }
    // The library's statements and the tool's run on one connection: with
    // autocommit off inside one transaction, all of them commit or none.
    const unsigned long thread = mysql_thread_id(s.conn());
    if (atomic && (mysql_query(s.conn(), "SET autocommit=0") != 0 || mysql_query(s.conn(), "START TRANSACTION") != 0)) {
        fprintf(stderr, "util-db: batch: cannot start a transaction: %s\n", mysql_error(s.conn()));
        return kFailed;
    }
    std::string line;
    int n = 0;
    int rc = kOk;
    while (rc == kOk && std::getline(ss, line)) {
        ++n;
        std::vector<std::string> words;
        if (!split_words(line, &words)) {
            fprintf(stderr, "util-db: batch line %d: unbalanced quote\n", n);
            rc = kUsage;
        } else if (!words.empty() && words[0][0] != '#') {
            rc = run_words(s, words, true, json);
        }
        if (rc != kOk) {
            fprintf(stderr, "util-db: batch stopped at line %d (exit %d): %s\n", n, rc, line.c_str());
        }
    }
    if (!atomic) {
        return rc;
    }
    if (rc == kOk && mysql_thread_id(s.conn()) != thread) {
        fprintf(stderr, "util-db: batch: the connection was renewed during the batch; not applied as one\n");
        rc = kFailed;
    }
    if (mysql_query(s.conn(), rc == kOk ? "COMMIT" : "ROLLBACK") != 0) {
        fprintf(stderr, "util-db: batch: %s failed: %s\n", rc == kOk ? "COMMIT" : "ROLLBACK", mysql_error(s.conn()));
        rc = kFailed;
    } else if (rc != kOk) {
        fprintf(stderr, "util-db: batch rolled back: nothing of it is applied\n");
    }
    mysql_query(s.conn(), "SET autocommit=1");
    return rc;
}

// One command line (the program's, or a batch line) parsed and run.
// A batch's --json holds for each of its lines.
int run_words(Session& s, std::vector<std::string> words, bool in_batch, bool json) {
    CLI::App app{"util-db: the appliance's configuration database from the command line", "util-db"};
    app.require_subcommand(1);
    app.fallthrough();
    app.allow_extras();  // the words of `call`; any other command refuses them
    std::string log;
    std::string port;
    app.add_flag("--json", json, "print results as JSON");
    app.add_flag("--trace", g_trace, "print the SQL the library sends, on standard error");
    app.add_option("--log", log, "print the library's log records up to this syslog priority (0-7) on standard error")
        ->type_name("LEVEL");
    if (!in_batch) {
        app.add_option("--port", port, "the server's TCP port (sets MYSQL_TCP_PORT for the client library)")
            ->type_name("N");
        app.set_version_flag("--version", std::string("util-db ") + UTIL_DB_VERSION);
    }
    app.footer("Exit status: 0 success; 1 failure reported by a function, differences, dangling references or a failed\n"
               "operation; 2 usage error; 3 database not reachable. Failure reasons go to standard error.");

    auto* call = app.add_subcommand("call", "call one library function: call FUNCTION ARG...");
    call->prefix_command();
    call->footer("Arguments: strings as they are, NULL as '-', integers in decimal; an (out) buffer as '-' or its size\n"
                 "in bytes; an (out) array as '-'; a record as field=value words. `util-db list WORD` shows them.");

    std::string word;
    auto* list = app.add_subcommand("list", "the callable functions with a one-line description each");
    list->add_option("WORD", word, "only the functions whose name or description contains WORD");

    std::string table;
    auto* dump = app.add_subcommand("dump", "print one table, rows in key order");
    dump->add_option("TABLE", table, "the table")->required();

    std::string output;
    auto* exp = app.add_subcommand("export", "the whole configuration as one JSON document");
    exp->add_option("-o,--output", output, "write to FILE instead of standard output")->type_name("FILE");

    std::string file;
    auto* imp = app.add_subcommand("import", "replace the configuration by a document's, all or nothing");
    imp->add_option("FILE", file, "the document, or - for standard input")->required();
    auto* diff = app.add_subcommand("diff", "compare a document with the running configuration (exit 1: different)");
    diff->add_option("FILE", file, "the document, or - for standard input")->required();
    app.add_subcommand("check", "list references between tables that name nothing (exit 1: some)");
    bool atomic = false;
    auto* batch = app.add_subcommand("batch", "run util-db command lines from a file on one connection");
    batch->add_option("FILE", file, "one command line per line, or - for standard input")->required();
    batch->add_flag("--atomic", atomic, "in one transaction: nothing stays applied when a line fails");
    app.add_subcommand("status", "the node's role (primary or replica) and replication state");

    std::reverse(words.begin(), words.end());  // CLI11 takes a vector last word first
    try {
        app.parse(words);
    } catch (const CLI::ParseError& e) {
        if (app.get_subcommands().empty() && !app.remaining().empty()) {
            fprintf(stderr, "util-db: unknown command '%s' (util-db --help lists them)\n", app.remaining()[0].c_str());
            return kUsage;
        }
        const int rc = app.exit(e);
        return rc == 0 ? kOk : kUsage;
    }
    if (!log.empty()) {
        long long level = 0;
        if (!cli::parse_decimal(log, 0, 7, &level)) {
            fprintf(stderr, "util-db: --log takes a syslog priority from 0 to 7, not '%s'\n", log.c_str());
            return kUsage;
        }
        g_log = static_cast<int>(level);
        util_db_log_level = std::max(3, g_log);
    }
    if (!port.empty()) {
        long long p = 0;
        if (!cli::parse_decimal(port, 1, 65535, &p)) {
            fprintf(stderr, "util-db: --port takes a decimal port number from 1 to 65535, not '%s'\n", port.c_str());
            return kUsage;
        }
        setenv("MYSQL_TCP_PORT", port.c_str(), 1);
    }
    CLI::App* sub = app.get_subcommands().front();
    const std::string cmd = sub->get_name();
    if (in_batch && (cmd == "batch" || cmd == "import")) {
        fprintf(stderr, "util-db: %s cannot run inside a batch\n", cmd.c_str());
        return kUsage;
    }
    const std::vector<std::string> rest = app.remaining();
    if (cmd != "call" && !rest.empty()) {
        fprintf(stderr, "util-db: %s: unexpected argument '%s'\n", cmd.c_str(), rest[0].c_str());
        return kUsage;
    }
    if (cmd == "call") {
        if (rest.empty()) {
            fprintf(stderr, "util-db: call needs a function name (util-db list shows them)\n");
            return kUsage;
        }
        return run_call(s, rest, json);
    }
    if (cmd == "list") {
        return run_list(word, json);
    }
    if (cmd == "export") {
        return run_export(s, output);
    }
    if (cmd == "batch") {
        return run_batch(s, file, atomic, json);
    }
    if (!s.connect()) {
        return kUnreachable;
    }
    if (cmd == "dump") {
        return finish(config::run_dump(s.conn(), table, json));
    }
    if (cmd == "import") {
        return finish(config::run_import(s.conn(), file, json));
    }
    if (cmd == "diff") {
        return finish(config::run_diff(s.conn(), file, json));
    }
    if (cmd == "check") {
        return finish(config::run_check(s.conn(), json));
    }
    return finish(config::run_status(s.conn(), json));
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
    char buf[4096];
    vsnprintf(buf, sizeof buf, fmt, ap);
    size_t len = strlen(buf);
    while (len > 0 && buf[len - 1] == '\n') {
        buf[--len] = '\0';
    }
    if (priority <= 3) {
        g_reasons.emplace_back(buf);
    }
    if (priority <= g_log) {
        fprintf(stderr, "LOG %d: %s\n", priority, buf);
    }
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

bool parse_decimal(const std::string& text, long long lo, long long hi, long long* value) {
    if (text.empty()) {
        return false;
    }
    const size_t digits = text.size() - (text[0] == '-' ? 1 : 0);
    if (digits == 0 || digits > 18 ||
        text.find_first_not_of("0123456789", text[0] == '-' ? 1 : 0) != std::string::npos) {
        return false;
    }
    const long long v = strtoll(text.c_str(), nullptr, 10);
    if (v < lo || v > hi) {
        return false;
    }
    *value = v;
    return true;
}

bool parse_int(const std::string& text, int* value) {
    long long v = 0;
    if (!parse_decimal(text, INT32_MIN, INT32_MAX, &v)) {
        return false;
    }
    *value = static_cast<int>(v);
    return true;
}

long long count_rows(db_handle_t* handle, const char* table) {
    MYSQL* conn = static_cast<MYSQL*>(handle->conn);
    const std::string sql = std::string("SELECT COUNT(*) FROM ") + table;
    if (mysql_real_query(conn, sql.data(), sql.size()) != 0) {
        return -1;
    }
    MYSQL_RES* res = mysql_store_result(conn);
    MYSQL_ROW row = res ? mysql_fetch_row(res) : nullptr;
    const long long n = row && row[0] ? atoll(row[0]) : -1;
    if (res) {
        mysql_free_result(res);
    }
    return n;
}

}  // namespace cli

int main(int argc, char** argv) {
    // The library's error records are the reasons shown when a call fails.
    util_db_log_switch = 1;
    util_db_log_level = 3;
    Session session;
    return run_words(session, std::vector<std::string>(argv + 1, argv + argc), false, false);
}
