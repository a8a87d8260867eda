// Load and faults, against the private server:
//  - a bounded soak: threads with a handle each and threads sharing one handle
//    run writes and reads while the server is stopped and started twice;
//  - an allocation failure injected at every allocation of every list and
//    array getter, one at a time.
#include <stdio.h>
#include <stdlib.h>
#include <unistd.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "harness.h"

using namespace testbed;
using Clock = std::chrono::steady_clock;
using namespace std::chrono_literals;

namespace {

char* W(const char* s) { return const_cast<char*>(s); }

// A predefined service of our own with its rules ("(max src, min src, max dst, min dst)").
void predefined(int id, const std::string& name, const std::vector<std::string>& rules) {
    const std::string sid = std::to_string(id);
    exec("delete from PredefineServers where serverId = " + sid + " or name = '" + name + "'");
    exec("delete from PredefineServerRules where serverId = " + sid);
    exec("insert into PredefineServers (serverId, name) values (" + sid + ", '" + name + "')");
    for (const std::string& r : rules) {
        exec("insert into PredefineServerRules (serverId, maxsrcport, minsrcport, maxdstport, mindstport) "
             "values (" + sid + ", " + r.substr(1));
    }
}

void drop_predefined(int id) {
    exec("delete from PredefineServerRules where serverId = " + std::to_string(id));
    exec("delete from PredefineServers where serverId = " + std::to_string(id));
}

// ---- Soak ----

constexpr int kOwnThreads = 3;     // a handle each
constexpr int kSharedThreads = 3;  // one handle between them
constexpr int kRestarts = 2;

struct Worker {
    db_handle_t* handle = nullptr;
    int id = 0;
    long calls = 0, ok = 0, down_failures = 0, up_failures = 0, recoveries = 0;
    long up_failures_by_kind[4] = {0, 0, 0, 0};
    std::atomic<int> failures_seen_down{0};  // failures of calls that started while down
    std::vector<std::string> acknowledged;   // names whose insert answered 0
    std::vector<std::string> faults;         // undocumented outcomes
};

struct Soak {
    std::atomic<bool> stop{false};
    std::atomic<bool> down{false};
    std::atomic<int> epoch{0};  // incremented once the server is up again
};

// One call of the mix; returns whether it succeeded, records undocumented results.
bool one_call(Worker& w, long i) {
    db_handle_t* h = w.handle;
    char out[512];
    switch (i % 4) {
        case 0: {  // write, acknowledged or not
            const std::string name = "soak-" + std::to_string(w.id) + "-" + std::to_string(i);
            const int r = insertServersName(h, W(name.c_str()), W("load"));
            if (r == 0) {
                w.acknowledged.push_back(name);
            } else if (r != -1) {
                w.faults.push_back("insertServersName " + std::to_string(r));
            }
            return r == 0;
        }
        case 1: {  // read back the last acknowledged write
            const std::string name = w.acknowledged.empty() ? "soak-none" : w.acknowledged.back();
            const int expected = w.acknowledged.empty() ? 0 : 1;
            const int r = checkServersByName(h, W(name.c_str()));
            if (r != -1 && r != expected) {
                w.faults.push_back("checkServersByName " + std::to_string(r) + " for " + name);
            }
            return r == expected;
        }
        case 2: {  // two-statement read into a caller buffer
            const int r = selectInterfaceInfoByNameSA(h, W("lan"), out, sizeof out);
            if (r != -1 && r != 2) {
                w.faults.push_back("selectInterfaceInfoByNameSA " + std::to_string(r));
            }
            return r == 2;
        }
        default: {  // heap list
            db_predefsrv_info* l = db_get_srv_info_by_name(h, W("soaksvc"));
            if (l != nullptr && (l->next != nullptr || l->mindport != 80)) {
                w.faults.push_back("db_get_srv_info_by_name: wrong list");
            }
            db_free_predefsrv_info(l);
            return l != nullptr;
        }
    }
}

void work(Worker& w, Soak& s) {
    int seen_epoch = s.epoch.load();
    for (long i = 0; !s.stop.load(); ++i) {
        const bool was_down = s.down.load();
        const int epoch = s.epoch.load();
        const bool ok = one_call(w, i);
        const bool down_now = s.down.load();
        ++w.calls;
        if (epoch != seen_epoch) {  // the first call that started after a restart
            seen_epoch = epoch;
            ++w.recoveries;
            if (!ok) {
                w.faults.push_back("first call after restart " + std::to_string(epoch) + " failed");
            }
        }
        if (ok) {
            ++w.ok;
            continue;
        }
        if (was_down) {
            ++w.down_failures;
            ++w.failures_seen_down;
        } else if (!down_now) {
            ++w.up_failures;  // the server was up during the whole call
            ++w.up_failures_by_kind[i % 4];
        }
        // What a caller does after a failure: probe, so that a dead connection is
        // marked and the next statement reconnects.
        util_db_chkconnect(w.handle);
        if (was_down) {
            std::this_thread::sleep_for(2ms);
        }
    }
}

TEST(LoadTest, SoakThroughTwoServerRestarts) {
    truncate({"Servers", "ServerRules", "SecurityAreas", "SecurityAreaInterfaces"});
    predefined(101, "soaksvc", {"('65535', '0', '80', '80')"});
    exec("insert into SecurityAreas (securityAreaId, name) values (1, 'lan')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'eth1'), (1, 'eth2')");

    // A hang or a deadlock ends the program with a message instead of the suite's time-out.
    std::mutex m;
    std::condition_variable done_cv;
    bool done = false;
    std::thread watchdog([&] {
        std::unique_lock<std::mutex> lock(m);
        if (!done_cv.wait_for(lock, 50s, [&] { return done; })) {
            fprintf(stderr, "soak: no progress within 50 s (hang or deadlock)\n");
            _exit(3);
        }
    });

    std::vector<db_handle_t> handles(kOwnThreads + 1);
    for (db_handle_t& h : handles) {
        h = db_handle_t{};
        ASSERT_EQ(util_db_init(&h), &h);
        ASSERT_EQ(util_db_connect(&h), &h);
    }
    std::vector<Worker> workers(kOwnThreads + kSharedThreads);
    for (size_t i = 0; i < workers.size(); ++i) {
        workers[i].id = static_cast<int>(i);
        workers[i].handle = &handles[i < kOwnThreads ? i : kOwnThreads];
    }
    Soak s;
    std::vector<std::thread> threads;
    for (Worker& w : workers) {
        threads.emplace_back(work, std::ref(w), std::ref(s));
    }
    const Clock::time_point start = Clock::now();
    std::this_thread::sleep_for(1s);
    for (int r = 1; r <= kRestarts; ++r) {
        s.down = true;  // from here on a failure is expected
        server_stop();
        // Every thread has seen the server gone before it comes back.
        for (Worker& w : workers) {
            const int before = w.failures_seen_down.load();
            for (int t = 0; t < 500 && w.failures_seen_down.load() < before + 2; ++t) {
                std::this_thread::sleep_for(10ms);
            }
        }
        server_start();
        s.down = false;
        ++s.epoch;
        std::this_thread::sleep_for(1s);
    }
    s.stop = true;
    for (std::thread& t : threads) {
        t.join();
    }
    const double seconds = std::chrono::duration<double>(Clock::now() - start).count();
    for (db_handle_t& h : handles) {
        util_db_disconnect(&h);
        util_db_deinit(&h);
    }
    {
        std::lock_guard<std::mutex> lock(m);
        done = true;
    }
    done_cv.notify_one();
    watchdog.join();

    // No lost acknowledged write.
    std::set<std::string> stored;
    for (const Row& r : rows("select name from Servers where name like 'soak-%'")) {
        stored.insert(*r[0]);
    }
    long calls = 0, ok = 0, down = 0, up = 0, recoveries = 0, writes = 0;
    for (Worker& w : workers) {
        SCOPED_TRACE("thread " + std::to_string(w.id));
        for (const std::string& f : w.faults) {
            ADD_FAILURE() << f;
        }
        for (const std::string& name : w.acknowledged) {
            EXPECT_EQ(stored.count(name), 1u) << "acknowledged write lost: " << name;
        }
        EXPECT_EQ(w.recoveries, kRestarts);
        EXPECT_EQ(w.up_failures, 0) << "by call: " << w.up_failures_by_kind[0] << " " << w.up_failures_by_kind[1]
                                    << " " << w.up_failures_by_kind[2] << " " << w.up_failures_by_kind[3];
        EXPECT_GT(w.down_failures, 0);
        calls += w.calls;
        ok += w.ok;
        down += w.down_failures;
        up += w.up_failures;
        recoveries += w.recoveries;
        writes += static_cast<long>(w.acknowledged.size());
    }
    printf("soak: %.1f s, %d threads (%d own handles, %d on one shared handle), %d restarts\n"
           "soak: %ld calls, %ld succeeded, %ld failed while down, %ld failed while up, "
           "%ld recovery calls, %ld acknowledged writes checked\n",
           seconds, kOwnThreads + kSharedThreads, kOwnThreads, kSharedThreads, kRestarts, calls, ok, down, up,
           recoveries, writes);
    EXPECT_LT(seconds, 45.0);
    drop_predefined(101);
}

// ---- Allocation failure at every allocation of the list and array getters ----

struct Getter {
    const char* name;
    std::function<bool(db_handle_t*)> call;  // true when it handed over a result (freed here)
};

class AllocSweepTest : public LibraryTest {};

TEST_F(AllocSweepTest, EveryAllocationOfEveryGetterFailsCleanly) {
    truncate({"Servers", "ServerRules", "Apps", "Traits", "Assets", "AssetProperties", "SecurityAreas",
              "SecurityAreaInterfaces"});
    predefined(102, "svc", {"('2', '1', '4', '3')", "('6', '5', '8', '7')", "('10', '9', '12', '11')"});
    exec("insert into Apps values (1, 'app', 1, '80', '81', 0, 'p', 'd'), (2, 'app', 2, '82', NULL, 1, NULL, 'e'), "
         "(3, 'app', 3, '84', '85', 0, 'q', NULL)");
    exec("insert into Traits values (1, 7, '0', 'GET', '4'), (2, 7, '1', 'POST', NULL), (3, 7, NULL, 'PUT', '9')");
    exec("insert into SecurityAreas (securityAreaId, name, enable) values (1, 'lan', 1)");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'eth1'), (1, 'eth2')");
    exec("insert into Assets (assetId, ipAddress, macAddress, securityAreaName) values "
         "(1, '10.0.0.1', 'aa:01', 'lan'), (2, '10.0.0.2', 'aa:02', 'lan')");
    exec("insert into AssetProperties (assetId, assetPropertyType) values (1, 3), (2, 3)");

    const std::vector<Getter> getters = {
        {"db_get_srv_info_by_name",
         [](db_handle_t* h) { auto* l = db_get_srv_info_by_name(h, W("svc")); db_free_predefsrv_info(l); return l != nullptr; }},
        {"db_get_app_info_by_name",
         [](db_handle_t* h) { auto* l = db_get_app_info_by_name(h, "app"); db_free_app_info(l); return l != nullptr; }},
        {"db_get_trait_info_by_appid",
         [](db_handle_t* h) { auto* l = db_get_trait_info_by_appid(h, 7); db_free_trait_info(l); return l != nullptr; }},
        {"get_ipmac_asset_info",
         [](db_handle_t* h) {
             asset_info_t* a = nullptr;
             const int n = get_ipmac_asset_info(h, 3, &a);
             EXPECT_TRUE(n == 2 || (n == -1 && a == nullptr)) << n;
             if (n > 0) ipmac_asset_free(h, a);
             return n > 0;
         }},
        {"get_interfaces_by_devinfo",
         [](db_handle_t* h) {
             asset_intface_t* a = nullptr;
             const int n = get_interfaces_by_devinfo(h, "10.0.0.1", "aa:01", &a);
             EXPECT_TRUE(n == 2 || (n == -1 && a == nullptr)) << n;
             if (n > 0) devinfo_interfaces_free(h, a);
             return n > 0;
         }},
    };
    log_off();
    for (const Getter& g : getters) {
        SCOPED_TRACE(g.name);
        const unsigned long before = util_db_test_alloc_count;
        ASSERT_TRUE(g.call(&h));
        const int allocations = static_cast<int>(util_db_test_alloc_count - before);
        EXPECT_GT(allocations, 0);
        for (int n = 1; n <= allocations; ++n) {
            SCOPED_TRACE("failing allocation " + std::to_string(n));
            FailAlloc fail(n);
            EXPECT_FALSE(g.call(&h));
        }
        EXPECT_TRUE(g.call(&h));  // nothing left behind that changes the next call
        printf("alloc sweep: %s: %d allocations, each failed once\n", g.name, allocations);
    }
    drop_predefined(102);
}

}  // namespace
