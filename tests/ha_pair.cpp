// ha_pair: the library on an active/standby pair (scripts/ha.sh).
//   ha_pair HA_SH DIR      (tests/ha-pair.sh runs it and removes the pair)
// Threads write through the library to the primary; every acknowledged row is
// on the standby; a write that reaches the standby fails cleanly; the primary
// is killed and the standby promoted; the writes go on, and the promoted node
// holds every write that was ever acknowledged. Prints its figures.
//
// The client library reads MYSQL_TCP_PORT once per process, so the writers
// cannot follow the primary by port: they reach the pair through a loopback
// forwarder that plays the pair's service address, the way a virtual IP does,
// and that is re-pointed at the promoted node.

#include "util-database.h"

#include <arpa/inet.h>
#include <mysql.h>
#include <netinet/in.h>
#include <poll.h>
#include <stdarg.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/socket.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <map>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::atomic<int> g_failures{0};
#define CHECK(cond, ...)                                           \
    do {                                                           \
        if (!(cond)) {                                             \
            ++g_failures;                                          \
            fprintf(stderr, "ha_pair:%d: failed: ", __LINE__);     \
            fprintf(stderr, __VA_ARGS__);                          \
            fputc('\n', stderr);                                   \
        }                                                          \
    } while (0)

long since_ms(Clock::time_point t) {
    return static_cast<long>(std::chrono::duration_cast<milliseconds>(Clock::now() - t).count());
}

// The library's error records (priority 3), in order.
std::mutex g_log_mutex;
std::vector<std::string> g_errors;

void record(int priority, const char* fmt, va_list ap) __attribute__((format(printf, 2, 0)));
void record(int priority, const char* fmt, va_list ap) {
    char text[2048];
    vsnprintf(text, sizeof text, fmt, ap);
    std::lock_guard<std::mutex> lock(g_log_mutex);
    if (priority == 3) {
        g_errors.push_back(text);
    }
}

// --- the service address: a forwarder to whichever node g_target names ---
std::atomic<int> g_target{0};

sockaddr_in loopback(int port) {
    sockaddr_in a{};
    a.sin_family = AF_INET;
    a.sin_port = htons(static_cast<uint16_t>(port));
    a.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    return a;
}

void pump(int client, int server) {
    pollfd p[2] = {{client, POLLIN, 0}, {server, POLLIN, 0}};
    char buf[16384];
    for (bool open = true; open && poll(p, 2, -1) > 0;) {
        for (int i = 0; i < 2 && open; ++i) {
            if (p[i].revents != 0) {
                ssize_t n = read(p[i].fd, buf, sizeof buf);
                open = n > 0 && write(p[1 - i].fd, buf, static_cast<size_t>(n)) == n;
            }
        }
    }
    close(client);
    close(server);
}

int start_forwarder() {
    int l = socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in a = loopback(0);
    socklen_t len = sizeof a;
    if (bind(l, reinterpret_cast<sockaddr*>(&a), len) != 0 || listen(l, 64) != 0 ||
        getsockname(l, reinterpret_cast<sockaddr*>(&a), &len) != 0) {
        return -1;
    }
    std::thread([l] {
        for (int c; (c = accept(l, nullptr, nullptr)) >= 0;) {
            int s = socket(AF_INET, SOCK_STREAM, 0);
            sockaddr_in to = loopback(g_target);
            if (connect(s, reinterpret_cast<sockaddr*>(&to), sizeof to) == 0) {
                std::thread(pump, c, s).detach();
            } else {  // the node is down: the client sees a lost connection
                close(s);
                close(c);
            }
        }
    }).detach();
    return ntohs(a.sin_port);
}

// --- the test's own view of a node (its own connection, explicit port) ---
// Runs one statement; returns the first column of every row.
std::vector<std::string> column(int port, const std::string& sql) {
    std::vector<std::string> cells;
    MYSQL* m = mysql_init(nullptr);
    if (mysql_real_connect(m, "127.0.0.1", "root", "582914", "firewall", static_cast<unsigned>(port),
                           nullptr, 0) != nullptr &&
        mysql_query(m, sql.c_str()) == 0) {
        MYSQL_RES* r = mysql_store_result(m);
        for (MYSQL_ROW row; r != nullptr && (row = mysql_fetch_row(r)) != nullptr;) {
            cells.push_back(row[0] != nullptr ? row[0] : "NULL");
        }
        mysql_free_result(r);
    } else {
        CHECK(false, "port %d: %s: %s", port, sql.c_str(), mysql_error(m));
    }
    mysql_close(m);
    return cells;
}

std::string value(int port, const std::string& sql) {
    std::vector<std::string> cells = column(port, sql);
    return cells.empty() ? "" : cells[0];
}

// --- scripts/ha.sh ---
std::string g_ha, g_dir;

// Runs "ha.sh VERB DIR"; returns the NAME=value lines it printed.
std::map<std::string, std::string> ha(const char* verb) {
    std::string cmd = g_ha + " " + verb + " " + g_dir;
    std::map<std::string, std::string> out;
    FILE* p = popen(cmd.c_str(), "r");
    char line[256];
    while (p != nullptr && fgets(line, sizeof line, p) != nullptr) {
        if (char* eq = strchr(line, '=')) {
            out[std::string(line, eq)] = std::string(eq + 1, strcspn(eq + 1, "\n"));
        }
    }
    int rc = p != nullptr ? pclose(p) : -1;
    CHECK(rc == 0, "%s: exit status %d", cmd.c_str(), rc);
    return out;
}

// --- the writers: one handle each, a new zone per call ---
struct Writer {
    db_handle_t handle{};
    int id = 0;
    int next = 0;
    std::vector<std::string> acked;
    int acked_after_failover = 0;
    std::thread thread;
};

std::atomic<bool> g_stop{false};
std::atomic<bool> g_moved{false};      // the service address leads to the promoted node
std::atomic<long> g_resumed_ms{-1};    // first acknowledged write after the kill
Clock::time_point g_kill;

void write_rows(Writer* w) {
    char name[64];
    while (!g_stop) {
        snprintf(name, sizeof name, "ha-%d-%d", w->id, w->next++);
        const bool was_connected = (w->handle.flag & 1) != 0;
        if (insertSecurityAreas(&w->handle, name) == 0) {
            w->acked.push_back(name);
            if (g_moved) {
                long expected = -1;
                g_resumed_ms.compare_exchange_strong(expected, since_ms(g_kill));
                ++w->acked_after_failover;
            }
            continue;
        }
#ifdef UTIL_DB_SAFE
        // A statement that lost its server clears the connected bit itself.
        CHECK((w->handle.flag & 1) == 0, "writer %d: connected bit still set after a failed call", w->id);
#else
        // The bit stays set: every call fails until util_db_chkconnect clears it.
        if (was_connected) {
            CHECK((w->handle.flag & 1) != 0 && insertSecurityAreas(&w->handle, name) == -1,
                  "writer %d: a handle whose server went away did not stay stuck", w->id);
            util_db_chkconnect(&w->handle);
        }
#endif
        std::this_thread::sleep_for(milliseconds(20));
    }
}

void start_writers(std::vector<Writer>& writers) {
    g_stop = false;
    for (Writer& w : writers) {
        w.thread = std::thread(write_rows, &w);
    }
}

void stop_writers(std::vector<Writer>& writers) {
    g_stop = true;
    for (Writer& w : writers) {
        w.thread.join();
    }
}

// The number of acknowledged writes that are not on the node.
int missing_on(int port, const std::vector<Writer>& writers) {
    std::vector<std::string> rows = column(port, "select name from SecurityAreas");
    std::set<std::string> present(rows.begin(), rows.end());
    int missing = 0;
    for (const Writer& w : writers) {
        for (const std::string& name : w.acked) {
            missing += present.count(name) == 0 ? 1 : 0;
        }
    }
    return missing;
}

}  // namespace

// The library's log records reach the system log through these.
extern "C" void vsyslog(int priority, const char* fmt, va_list ap) { record(priority, fmt, ap); }
extern "C" void syslog(int priority, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    record(priority, fmt, ap);
    va_end(ap);
}

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: ha_pair HA_SH DIR\n");
        return 2;
    }
    g_ha = argv[1];
    g_dir = argv[2];
    const int kWriters = 4;
    // The service address must be in place before the client library's first use.
    int service = start_forwarder();
    CHECK(service > 0, "no forwarder");
    setenv("MYSQL_TCP_PORT", std::to_string(service).c_str(), 1);
    std::map<std::string, std::string> ports = ha("start");
    const int primary = atoi(ports["PRIMARY_PORT"].c_str());
    const int replica = atoi(ports["REPLICA_PORT"].c_str());
    if (primary == 0 || replica == 0) {
        return 1;
    }
    util_db_log_switch = 1;
    util_db_log_level = 3;

    // A service address that leads to the standby: the write is refused and changes nothing.
    g_target = replica;
    db_handle_t probe{};
    util_db_init(&probe);
    CHECK(insertSecurityAreas(&probe, const_cast<char*>("ha-probe")) == -1, "the standby took a write");
    CHECK(!g_errors.empty() && g_errors.back() ==
              "Data base query faild: The MariaDB server is running with the --read-only option so it "
              "cannot execute this statement\n",
          "log: %s", g_errors.empty() ? "(none)" : g_errors.back().c_str());
    CHECK((probe.flag & 1) != 0, "a refused statement disconnected the handle");
    util_db_disconnect(&probe);
    util_db_deinit(&probe);
    for (int port : {primary, replica}) {
        CHECK(value(port, "select count(*) from SecurityAreas where name = 'ha-probe'") == "0", "port %d: the refused write left rows", port);
    }

    // Writes to the primary; the standby has every acknowledged one.
    g_target = primary;
    std::vector<Writer> writers(kWriters);
    for (int i = 0; i < kWriters; ++i) {
        writers[i].id = i;
        util_db_init(&writers[i].handle);
        CHECK(util_db_connect(&writers[i].handle) != nullptr, "writer %d: no connection", i);
    }
    start_writers(writers);
    std::this_thread::sleep_for(milliseconds(2000));
    stop_writers(writers);
    size_t before = 0;
    for (const Writer& w : writers) {
        before += w.acked.size();
    }
    Clock::time_point applied = Clock::now();
    std::string pos = value(primary, "select @@gtid_binlog_pos");
    CHECK(value(replica, "select master_gtid_wait('" + pos + "', 30)") == "0", "the standby did not apply %s", pos.c_str());
    long lag_ms = since_ms(applied);
    CHECK(before > 0 && missing_on(replica, writers) == 0, "the standby lacks acknowledged writes (%zu)", before);

    // Failover while the writers write.
    start_writers(writers);
    std::this_thread::sleep_for(milliseconds(1000));
    CHECK(value(primary, "select group_concat(variable_value order by variable_name) from "
                         "information_schema.global_status where variable_name in "
                         "('RPL_SEMI_SYNC_MASTER_NO_TX', 'RPL_SEMI_SYNC_MASTER_STATUS')") == "0,ON",
          "commits were acknowledged without the standby");
    g_kill = Clock::now();
    const int promoted = atoi(ha("failover")["PRIMARY_PORT"].c_str());
    long promote_ms = since_ms(g_kill);
    CHECK(promoted == replica, "failover promoted port %d, not %d", promoted, replica);
    g_target = promoted;
    g_moved = true;
    std::this_thread::sleep_for(milliseconds(2000));
    stop_writers(writers);
    size_t total = 0;
    for (Writer& w : writers) {
        total += w.acked.size();
        CHECK(w.acked_after_failover > 0, "writer %d wrote nothing after the failover", w.id);
        util_db_disconnect(&w.handle);
        util_db_deinit(&w.handle);
    }
    int lost = missing_on(promoted, writers);
    CHECK(lost == 0, "%d acknowledged writes lost in the failover", lost);

    printf("ha_pair: %d writers: %zu writes acknowledged before the failover, %zu in all, %d lost\n", kWriters,
           before, total, lost);
    printf("ha_pair: the standby applied the last acknowledged write %ld ms after it\n", lag_ms);
    printf("ha_pair: kill to promoted: %ld ms; kill to first write on the promoted node: %ld ms\n", promote_ms,
           g_resumed_ms.load());
    return g_failures == 0 ? 0 : 1;
}
