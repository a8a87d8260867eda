// Library call against a hand-written equivalent on the raw client API that
// sends the identical SQL, per call shape; interleaved in one run against the
// private server. Modes:
//   bench latency N OUT.tsv     per-call latencies (ns) of each shape and side
//   bench allocs N OUT.tsv      heap allocations per call (library minus raw)
//   bench callgrind N           under valgrind --tool=callgrind: one dump per shape and side
//   bench logsite N             under callgrind: a log site with logging off
//   bench threads SECONDS OUT.tsv  throughput with 1/2/4/8 threads, own handles and one shared handle
// The statements of both sides are compared once before measuring.
#include <dlfcn.h>
#include <malloc.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <valgrind/callgrind.h>

#include <algorithm>
#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <string>
#include <thread>
#include <vector>

#include "util-database.h"

namespace {

// ---- Seen from the client library: statements and allocations ----

bool g_capture = false;
std::vector<std::string> g_sent;
std::atomic<long> g_mallocs{0};

using query_fn = int (*)(MYSQL*, const char*);
query_fn real_query() {
    static query_fn fn = reinterpret_cast<query_fn>(dlsym(RTLD_NEXT, "mysql_query"));
    return fn;
}

}  // namespace

extern "C" {
int mysql_query(MYSQL* m, const char* q) {
    if (g_capture) g_sent.emplace_back(q);
    return real_query()(m, q);
}
// Counts every heap allocation of the process (library, client library, us).
extern void* __libc_malloc(size_t);
extern void* __libc_calloc(size_t, size_t);
extern void* __libc_realloc(void*, size_t);
void* malloc(size_t n) { g_mallocs.fetch_add(1, std::memory_order_relaxed); return __libc_malloc(n); }
void* calloc(size_t a, size_t b) { g_mallocs.fetch_add(1, std::memory_order_relaxed); return __libc_calloc(a, b); }
void* realloc(void* p, size_t n) { g_mallocs.fetch_add(1, std::memory_order_relaxed); return __libc_realloc(p, n); }
}

namespace {

MYSQL* raw_connect() {
    MYSQL* m = mysql_init(nullptr);
    if (mysql_real_connect(m, "127.0.0.1", "root", "582914", "firewall", 0, nullptr, 0) == nullptr) {
        fprintf(stderr, "raw connect: %s\n", mysql_error(m));
        exit(1);
    }
    return m;
}

void must(MYSQL* m, const char* sql) {
    if (real_query()(m, sql) != 0) {
        fprintf(stderr, "%s: %s\n", sql, mysql_error(m));
        exit(1);
    }
}

// ---- The raw equivalents: the statements the library sends, by hand ----

int raw_update(MYSQL* m, const char* name, int enable) {
    char sql[1024];
    snprintf(sql, sizeof sql, "UPDATE SecurityAreas SET enable = %d WHERE name = '%s';", enable, name);
    return mysql_query(m, sql) == 0 ? 0 : -1;
}

int raw_lookup_int(MYSQL* m, const char* name) {
    char sql[1024];
    snprintf(sql, sizeof sql, "select type from AddressPools where name= '%s';", name);
    if (mysql_query(m, sql) != 0) return -1;
    MYSQL_RES* res = mysql_store_result(m);
    if (res == nullptr) return -1;
    int v = -1;
    if (mysql_num_rows(res) > 0) {
        MYSQL_ROW row = mysql_fetch_row(res);
        if (row != nullptr) v = atoi(row[0]);
    }
    mysql_free_result(res);
    return v;
}

int raw_insert_zone(MYSQL* m, const char* name) {
    char sql[1024];
    snprintf(sql, sizeof sql, "select securityAreaId from SecurityAreas where name= '%s';", name);
    if (mysql_query(m, sql) != 0) return -1;
    MYSQL_RES* res = mysql_store_result(m);
    if (res == nullptr) return -1;
    const bool exists = mysql_num_rows(res) != 0;
    mysql_free_result(res);
    if (exists) return -1;
    snprintf(sql, sizeof sql, "insert into SecurityAreas (name) VALUES('%s');", name);
    return mysql_query(m, sql) == 0 ? 0 : -1;
}

int raw_members(MYSQL* m, const char* name, char* out, size_t len) {
    char sql[1024];
    snprintf(sql, sizeof sql, "select securityAreaId from SecurityAreas where name= '%s';", name);
    if (mysql_query(m, sql) != 0) return -1;
    MYSQL_RES* res = mysql_store_result(m);
    if (res == nullptr) return -1;
    MYSQL_ROW row = mysql_num_rows(res) ? mysql_fetch_row(res) : nullptr;
    if (row == nullptr) { mysql_free_result(res); return -1; }
    const int id = atoi(row[0]);
    mysql_free_result(res);
    snprintf(sql, sizeof sql, "select interfaceName from SecurityAreaInterfaces where securityAreaId= %d;", id);
    if (mysql_query(m, sql) != 0) return -1;
    res = mysql_store_result(m);
    if (res == nullptr) return -1;
    int n = 0;
    size_t at = 0;
    out[0] = '\0';
    while ((row = mysql_fetch_row(res)) != nullptr) {
        int w = snprintf(out + at, at < len ? len - at : 0, n ? ",%s" : "%s", row[0]);
        at += static_cast<size_t>(w);
        ++n;
    }
    mysql_free_result(res);
    return n;
}

struct RawApp { int appid; char* pname; int type; char* sport; char* cport; int inherit; char* ppdname; char* desc; RawApp* next; };
char* dup_cell(const char* c) {
    if (c == nullptr) return nullptr;
    char* p = static_cast<char*>(malloc(2048));
    strncpy(p, c, 2048);
    return p;
}
RawApp* raw_apps(MYSQL* m, const char* name) {
    char sql[1024];
    snprintf(sql, sizeof sql, "select * from Apps where name= '%s';", name);
    if (mysql_query(m, sql) != 0) return nullptr;
    MYSQL_RES* res = mysql_store_result(m);
    if (res == nullptr) return nullptr;
    RawApp *head = nullptr, *tail = nullptr;
    while (MYSQL_ROW row = mysql_fetch_row(res)) {
        RawApp* a = static_cast<RawApp*>(calloc(1, sizeof *a));
        a->appid = atoi(row[0]); a->pname = dup_cell(row[1]); a->type = row[2] ? atoi(row[2]) : 0;
        a->sport = dup_cell(row[3]); a->cport = dup_cell(row[4]); a->inherit = row[5] ? atoi(row[5]) : 0;
        a->ppdname = dup_cell(row[6]); a->desc = dup_cell(row[7]);
        (tail ? tail->next : head) = a;
        tail = a;
    }
    mysql_free_result(res);
    return head;
}
void raw_free_apps(RawApp* a) {
    while (a) { RawApp* n = a->next; free(a->pname); free(a->sport); free(a->cport); free(a->ppdname); free(a->desc); free(a); a = n; }
}

int raw_route(MYSQL* m, const char* dest, const char* gw, int distance, int priority) {
    // Built in pieces as the library does: optional columns, then their values.
    char sql[1024];
    int at = snprintf(sql, sizeof sql, "insert into RouteDatas (destIpMask,gateWayNextJump,outInterfaceName");
    if (distance != 0) at += snprintf(sql + at, sizeof sql - at, ",manageScope");
    if (priority != 0) at += snprintf(sql + at, sizeof sql - at, ",priority");
    at += snprintf(sql + at, sizeof sql - at, ") VALUES('%s','%s','any'", dest, gw);
    if (distance != 0) at += snprintf(sql + at, sizeof sql - at, ",'%d'", distance);
    if (priority != 0) at += snprintf(sql + at, sizeof sql - at, ",'%d'", priority);
    snprintf(sql + at, sizeof sql - at, ");");
    return mysql_query(m, sql) == 0 ? 0 : -1;
}

// ---- Shapes ----

struct Shape {
    const char* name;
    std::function<void(db_handle_t*, long)> lib;
    std::function<void(MYSQL*, long)> raw;
};

char g_buf[256];

std::vector<Shape> shapes() {
    return {
        {"update-by-name", [](db_handle_t* h, long i) { updateSecurityAreas(h, (char*)"lan", int(i & 1)); },
         [](MYSQL* m, long i) { raw_update(m, "lan", int(i & 1)); }},
        {"lookup-int", [](db_handle_t* h, long) { get_address_type_by_name(h, (char*)"pool1"); },
         [](MYSQL* m, long) { raw_lookup_int(m, "pool1"); }},
        {"lookup-then-insert",
         [](db_handle_t* h, long i) { std::string n = "lz" + std::to_string(i); insertSecurityAreas(h, n.data()); },
         [](MYSQL* m, long i) { std::string n = "rz" + std::to_string(i); raw_insert_zone(m, n.c_str()); }},
        {"two-statement-list",
         [](db_handle_t* h, long) { selectInterfaceInfoByNameSA(h, (char*)"lan", g_buf, sizeof g_buf); },
         [](MYSQL* m, long) { raw_members(m, "lan", g_buf, sizeof g_buf); }},
        {"heap-list", [](db_handle_t* h, long) { db_free_app_info(db_get_app_info_by_name(h, "app")); },
         [](MYSQL* m, long) { raw_free_apps(raw_apps(m, "app")); }},
        {"piece-built-insert",
         [](db_handle_t* h, long i) { insertRouteDatasgateInfo(h, "10.1.0.0/16", "192.168.1.1", nullptr, int(i % 7), 3); },
         [](MYSQL* m, long i) { raw_route(m, "10.1.0.0/16", "192.168.1.1", int(i % 7), 3); }},
    };
}

void seed(MYSQL* m) {
    for (const char* t : {"SecurityAreas", "SecurityAreaInterfaces", "AddressPools", "Apps", "RouteDatas"}) {
        must(m, (std::string("truncate table ") + t).c_str());
    }
    must(m, "insert into SecurityAreas (securityAreaId, name) values (1, 'lan')");
    must(m, "insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'eth1'), (1, 'eth2'), (1, 'eth3')");
    must(m, "insert into AddressPools (name, interfaceName, ipAddress, type, enable) values ('pool1', 'eth1', '10.0.0.0/24', 2, 1)");
    must(m, "insert into Apps values (1, 'app', 1, '80', '81', 0, 'p', 'd'), (2, 'app', 2, '82', NULL, 1, NULL, 'e'), "
            "(3, 'app', 3, '84', '85', 0, 'q', NULL)");
}

// Both sides send the same statements (new names for the insert shape aside).
void check_identical(db_handle_t* h, MYSQL* m, const std::vector<Shape>& ss) {
    for (const Shape& s : ss) {
        g_capture = true;
        g_sent.clear();
        s.lib(h, 1000000);
        std::vector<std::string> lib = g_sent;
        g_sent.clear();
        s.raw(m, 1000000);
        std::vector<std::string> raw = g_sent;
        g_capture = false;
        for (std::string& q : raw) {
            size_t at = q.find("rz1000000");
            if (at != std::string::npos) q.replace(at, 9, "lz1000000");
        }
        if (lib != raw) {
            fprintf(stderr, "%s: statements differ\n", s.name);
            for (auto& q : lib) fprintf(stderr, "  lib: %s\n", q.c_str());
            for (auto& q : raw) fprintf(stderr, "  raw: %s\n", q.c_str());
            exit(1);
        }
    }
}

long now_ns() {
    return std::chrono::duration_cast<std::chrono::nanoseconds>(
               std::chrono::steady_clock::now().time_since_epoch()).count();
}

db_handle_t* open_handle() {
    db_handle_t* h = new db_handle_t{};
    if (util_db_init(h) == nullptr || util_db_connect(h) == nullptr) {
        fprintf(stderr, "library connect failed\n");
        exit(1);
    }
    return h;
}

// A log site of the library's own macro, with logging off: the arguments are
// not evaluated and nothing is formatted.
int g_expensive_calls = 0;
__attribute__((noinline)) const char* expensive() { ++g_expensive_calls; return "text"; }
__attribute__((noinline)) void log_site(int i) { UTIL_DB_LOG(7, "value %d %s\n", i, expensive()); }
__attribute__((noinline)) void no_site(int i) { asm volatile("" ::"r"(i)); }

}  // namespace

int main(int argc, char** argv) {
    if (argc < 3) {
        fprintf(stderr, "usage: bench latency|allocs|callgrind|logsite|threads N [OUT]\n");
        return 2;
    }
    const std::string mode = argv[1];
    const long n = atol(argv[2]);
    FILE* out = argc > 3 ? fopen(argv[3], "w") : stdout;
    if (mode == "logsite") {
        util_db_log_switch = 0;
        CALLGRIND_ZERO_STATS;
        for (long i = 0; i < n; ++i) log_site(static_cast<int>(i));
        CALLGRIND_DUMP_STATS_AT("logsite-off");
        CALLGRIND_ZERO_STATS;
        for (long i = 0; i < n; ++i) no_site(static_cast<int>(i));
        CALLGRIND_DUMP_STATS_AT("logsite-none");
        printf("expensive() evaluated %d times\n", g_expensive_calls);
        return g_expensive_calls == 0 ? 0 : 1;
    }
    MYSQL* m = raw_connect();
    seed(m);
    db_handle_t* h = open_handle();
    const std::vector<Shape> ss = shapes();
    check_identical(h, m, ss);

    if (mode == "latency") {
        fprintf(out, "shape\tside\tns\n");
        for (const Shape& s : ss) {
            for (long i = 0; i < 50; ++i) { s.lib(h, -1 - i); s.raw(m, -1 - i); }  // warm-up
            for (long i = 0; i < n; ++i) {
                for (int k = 0; k < 2; ++k) {  // alternate which side goes first
                    const bool lib_side = ((i + k) & 1) == 0;
                    const long t0 = now_ns();
                    if (lib_side) s.lib(h, i); else s.raw(m, i);
                    fprintf(out, "%s\t%s\t%ld\n", s.name, lib_side ? "lib" : "raw", now_ns() - t0);
                }
            }
        }
    } else if (mode == "allocs") {
        fprintf(out, "shape\tlib_allocs_per_call\traw_allocs_per_call\tlibrary_own\n");
        for (const Shape& s : ss) {
            long a0 = g_mallocs;
            for (long i = 0; i < n; ++i) s.lib(h, 2000000 + i);
            long lib = g_mallocs - a0;
            a0 = g_mallocs;
            for (long i = 0; i < n; ++i) s.raw(m, 2000000 + i);
            long raw = g_mallocs - a0;
            fprintf(out, "%s\t%.2f\t%.2f\t%.2f\n", s.name, double(lib) / n, double(raw) / n, double(lib - raw) / n);
        }
    } else if (mode == "callgrind") {
        for (const Shape& s : ss) {
            for (long i = 0; i < 5; ++i) { s.lib(h, 3000000 + i); s.raw(m, 3000000 + i); }
            const std::string lib_tag = std::string(s.name) + "-lib", raw_tag = std::string(s.name) + "-raw";
            CALLGRIND_ZERO_STATS;
            for (long i = 0; i < n; ++i) s.lib(h, 3000100 + i);
            CALLGRIND_DUMP_STATS_AT(lib_tag.c_str());
            for (long i = 0; i < n; ++i) s.raw(m, 3000100 + i);
            CALLGRIND_DUMP_STATS_AT(raw_tag.c_str());
        }
    } else if (mode == "threads") {
        fprintf(out, "threads\thandles\tcalls_per_s\n");
        for (int shared = 0; shared < 2; ++shared) {
            for (int t : {1, 2, 4, 8}) {
                std::vector<db_handle_t*> hs;
                for (int i = 0; i < (shared ? 1 : t); ++i) hs.push_back(open_handle());
                std::atomic<bool> stop{false};
                std::atomic<long> calls{0};
                std::vector<std::thread> th;
                for (int i = 0; i < t; ++i) {
                    th.emplace_back([&, i] {
                        db_handle_t* mine = hs[shared ? 0 : i];
                        long c = 0;
                        while (!stop) { get_address_type_by_name(mine, (char*)"pool1"); ++c; }
                        calls += c;
                    });
                }
                std::this_thread::sleep_for(std::chrono::milliseconds(n));
                stop = true;
                for (auto& x : th) x.join();
                fprintf(out, "%d\t%s\t%.0f\n", t, shared ? "shared" : "own", calls * 1000.0 / n);
                for (db_handle_t* x : hs) { util_db_disconnect(x); util_db_deinit(x); delete x; }
            }
        }
    }
    if (out != stdout) fclose(out);
    util_db_disconnect(h);
    util_db_deinit(h);
    mysql_close(m);
    return 0;
}
