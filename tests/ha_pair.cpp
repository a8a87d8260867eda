// ha_pair: the library on an active/standby pair (scripts/ha.sh).
//   ha_pair HA_SH DIR      (tests/ha-pair.sh runs it and removes the pair)
// A write that reaches the standby fails cleanly; threads write through the
// library to the primary; the primary is killed and the standby promoted; the
// writes go on, the promoted node holds every write that was ever acknowledged,
// and the old primary comes back read-only. Prints its figures.
//
// The client library reads MYSQL_TCP_PORT once per process, so a process
// cannot follow the primary by port: the writers reach the pair through its
// service address, which ha.sh moves to the promoted node as a virtual IP
// would move; the write to the standby comes from a child process of its own.

#include "util-database.h"

#include <mysql.h>
#include <stdio.h>
#include <stdlib.h>
#include <string.h>
#include <sys/wait.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <functional>
#include <map>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

using Clock = std::chrono::steady_clock;
using std::chrono::milliseconds;

std::atomic<int> g_failures{0};
#define CHECK(cond, ...) \
    ((cond) ? void(0) : (++g_failures, fprintf(stderr, "ha_pair:%d: ", __LINE__), fprintf(stderr, __VA_ARGS__), void(fputc('\n', stderr))))

long since_ms(Clock::time_point t) {
    return static_cast<long>(std::chrono::duration_cast<milliseconds>(Clock::now() - t).count());
}

// The test's own view of a node (its own connection, to an explicit port):
// the first column of every row of one statement.
std::vector<std::string> column(int port, const std::string& sql) {
    std::vector<std::string> cells;
    MYSQL* m = mysql_init(nullptr);
    if (mysql_real_connect(m, "127.0.0.1", "root", "582914", "firewall", static_cast<unsigned>(port), nullptr, 0) &&
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

// Runs "HA_SH VERB DIR" (this program's arguments); returns the NAME=value lines it printed.
char** g_argv;
std::map<std::string, std::string> ha(const char* verb) {
    std::string cmd = std::string(g_argv[1]) + " " + verb + " " + g_argv[2];
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

// A writer: its own handle, a new zone per call.
struct Writer {
    db_handle_t handle{};
    std::vector<std::string> acked;
    int acked_after_failover = 0;
};

std::atomic<bool> g_stop{false};
std::atomic<bool> g_moved{false};    // the service address leads to the promoted node
std::atomic<size_t> g_acked{0};      // writes acknowledged so far, by all writers
std::atomic<int> g_next{0};          // the next zone's number

void write_rows(Writer* w) {
    char name[64];
    while (!g_stop) {
        snprintf(name, sizeof name, "ha-%d", g_next++);
        if (insertSecurityAreas(&w->handle, name) == 0) {
            w->acked.push_back(name);
            w->acked_after_failover += g_moved ? 1 : 0;
            ++g_acked;
            continue;
        }
#ifndef UTIL_DB_SAFE
        // A handle whose server went away fails every call until this clears its
        // connected bit; the safe profile's call that lost its server clears it itself.
        util_db_chkconnect(&w->handle);
#endif
        std::this_thread::sleep_for(milliseconds(20));
    }
}

// Runs the writers while `meanwhile` runs.
void write_during(std::vector<Writer>& writers, const std::function<void()>& meanwhile) {
    std::vector<std::thread> threads;
    g_stop = false;
    for (Writer& w : writers) {
        threads.emplace_back(write_rows, &w);
    }
    meanwhile();
    g_stop = true;
    for (std::thread& t : threads) {
        t.join();
    }
}

}  // namespace

int main(int argc, char** argv) {
    if (argc != 3) {
        fprintf(stderr, "usage: ha_pair HA_SH DIR\n");
        return 2;
    }
    g_argv = argv;
    std::map<std::string, std::string> ports = ha("start");
    const int primary = atoi(ports["PRIMARY_PORT"].c_str()), replica = atoi(ports["REPLICA_PORT"].c_str());
    if (primary == 0 || replica == 0 || ports["SERVICE_PORT"].empty()) {
        return 1;
    }
    // This process's library reaches the pair by its service address (read once, at the client's first use).
    setenv("MYSQL_TCP_PORT", ports["SERVICE_PORT"].c_str(), 1);

    // A process whose client library reaches the standby: the server refuses its
    // write as read-only (ER_OPTION_PREVENTS_STATEMENT), and the handle stays connected.
    pid_t child = fork();
    if (child == 0) {
        setenv("MYSQL_TCP_PORT", ports["REPLICA_PORT"].c_str(), 1);
        // The standby first applies the pair's grants: root may not write past its read_only.
        CHECK(value(replica, "select master_gtid_wait('" + value(primary, "select @@gtid_binlog_pos") + "', 30)") == "0",
              "the standby did not catch up");
        db_handle_t probe{};
        util_db_init(&probe);
        CHECK(insertSecurityAreas(&probe, const_cast<char*>("ha-probe")) == -1, "the standby took a write");
        CHECK((probe.flag & 1) != 0 && mysql_errno(static_cast<MYSQL*>(probe.conn)) == 1290,
              "the standby's refusal: connected bit %u, error %s", probe.flag & 1,
              probe.conn != nullptr ? mysql_error(static_cast<MYSQL*>(probe.conn)) : "(no connection)");
        _exit(g_failures == 0 ? 0 : 1);
    }
    int status = -1;
    CHECK(child > 0 && waitpid(child, &status, 0) == child && status == 0, "the write to the standby: %d", status);

    // Writes through the service address, and how soon the standby has them.
    std::vector<Writer> writers(4);
    for (size_t i = 0; i < writers.size(); ++i) {
        util_db_init(&writers[i].handle);
        CHECK(util_db_connect(&writers[i].handle) != nullptr, "writer %zu: no connection", i);
    }
    write_during(writers, [] { std::this_thread::sleep_for(milliseconds(2000)); });
    Clock::time_point applied = Clock::now();
    std::string pos = value(primary, "select @@gtid_binlog_pos");
    CHECK(value(replica, "select master_gtid_wait('" + pos + "', 30)") == "0", "standby did not apply %s", pos.c_str());
    long lag_ms = since_ms(applied);
    const size_t before = g_acked;

    // Failover while the writers write.
    int promoted = 0;
    long promote_ms = 0;
    write_during(writers, [&] {
        std::this_thread::sleep_for(milliseconds(1000));
        CHECK(value(primary, "select group_concat(variable_value order by variable_name) from "
                             "information_schema.global_status where variable_name in "
                             "('RPL_SEMI_SYNC_MASTER_NO_TX', 'RPL_SEMI_SYNC_MASTER_STATUS')") == "0,ON",
              "commits were acknowledged without the standby");
        Clock::time_point kill = Clock::now();
        promoted = atoi(ha("failover")["PRIMARY_PORT"].c_str());
        promote_ms = since_ms(kill);
        g_moved = true;
        std::this_thread::sleep_for(milliseconds(2000));
    });
    CHECK(promoted == replica, "failover promoted port %d, not %d", promoted, replica);
    // The promoted node holds every write ever acknowledged.
    const std::vector<std::string> rows = column(promoted, "select name from SecurityAreas");
    const std::set<std::string> present(rows.begin(), rows.end());
    int lost = 0;
    for (size_t i = 0; i < writers.size(); ++i) {
        CHECK(writers[i].acked_after_failover > 0, "writer %zu wrote nothing after the failover", i);
        for (const std::string& name : writers[i].acked) {
            lost += present.count(name) == 0 ? 1 : 0;
        }
        util_db_disconnect(&writers[i].handle);
        util_db_deinit(&writers[i].handle);
    }
    CHECK(lost == 0, "%d acknowledged writes lost in the failover", lost);

    // The old primary comes back fenced: read-only, following nobody.
    ha("start");
    CHECK(value(primary, "select @@read_only") == "1", "the old primary came back writable");

    printf("ha_pair: %zu writers: %zu writes acknowledged before the failover, %zu in all, %d lost\n",
           writers.size(), before, g_acked.load(), lost);
    printf("ha_pair: the standby had applied the last acknowledged write %ld ms later\n", lag_ms);
    printf("ha_pair: kill to promoted (and the service address moved): %ld ms\n", promote_ms);
    return g_failures == 0 ? 0 : 1;
}
