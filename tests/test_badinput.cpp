// Every string argument of every exported function, against the private
// server: NULL where the function checks it, the empty string, a value that
// makes its statement exactly fill the 1024-byte buffer and one that makes it
// overflow by one. The result is one the function documents; the statement
// sent is the full text or, when too long, its first 1023 characters; ASan
// proves that nothing is written past any buffer.
#include <stdlib.h>
#include <string.h>

#include <functional>
#include <string>
#include <vector>

#include "harness.h"

using namespace testbed;

namespace {

constexpr size_t kStatementMax = 1023;  // characters a statement can hold

// The results a function documents.
enum class Kind {
    Change,  // 0 or -1
    Number,  // an identifier or a count, -1 on failure
    Buffer,  // the caller's buffer (1) or NULL (0)
    List,    // a heap list / array (1) or none (0)
};

long failure(Kind k) { return (k == Kind::Change || k == Kind::Number) ? -1 : 0; }

bool documented(Kind k, long r) {
    switch (k) {
        case Kind::Change:
            return r == 0 || r == -1;
        case Kind::Number:
            return r >= -1;
        case Kind::Buffer:
        case Kind::List:
            return r == 0 || r == 1;
    }
    return false;
}

using Values = std::vector<const char*>;
using Call = std::function<long(db_handle_t*, const Values&)>;

struct Case {
    const char* name;
    Kind kind;
    // One letter per string argument: R refused when NULL (failure, nothing
    // sent), A accepted when NULL (a documented result), - not tried.
    const char* nulls;
    Values base;  // ordinary values, one per string argument
    Call call;
    long cut = 1;  // result when the value's statement is cut; 1: the failure value
    size_t max = kStatementMax;  // longest statement (the bridge member lists have a larger buffer)
};

char* W(const char* s) { return const_cast<char*>(s); }

// Caller buffers, larger than any cell the schema can hold.
char g_out[8192];
long buffer_result(const void* r) { return r == nullptr ? 0 : (r == g_out ? 1 : 2); }

// An interface record naming the values given.
_db_if_info ifrec(const char* name, const char* ipmask = nullptr, const char* pif = nullptr,
                  const char* mac = nullptr, const char* access = nullptr, int type = 0) {
    _db_if_info r{};
    r.type = type;
    r.pname = W(name);
    r.ipmask = W(ipmask);
    r.pifname = W(pif);
    r.mac = W(mac);
    r.access_ctrl = W(access);
    r.speed = 100;
    return r;
}

db_app_info apprec(const Values& v) {
    db_app_info a{};
    a.pname = W(v[0]);
    a.sport = W(v[1]);
    a.cport = W(v[2]);
    a.ppdname = W(v[3]);
    a.desc = W(v[4]);
    a.type = 1;
    return a;
}

db_trait_info traitrec(const Values& v) {
    db_trait_info t{};
    t.appid = 1;
    t.toffset = W(v[0]);
    t.trait = W(v[1]);
    t.depth = W(v[2]);
    return t;
}

#define FN(expr) [](db_handle_t* h, const Values& v) -> long { (void)v; return (expr); }
#define BUF(expr) [](db_handle_t* h, const Values& v) -> long { (void)v; return buffer_result(expr); }

const Values kIf1 = {"ethZq1"};

std::vector<Case> cases() {
    return {
        // Applications and traits.
        {"db_add_app", Kind::Change, "R----", {"Zq1", "Zq2", "Zq3", "Zq4", "Zq5"},
         FN([&] { db_app_info a = apprec(v); return db_add_app(h, &a); }())},
        {"db_update_app_by_name", Kind::Change, "R----", {"Zq1", "Zq2", "Zq3", "Zq4", "Zq5"},
         FN([&] { db_app_info a = apprec(v); return db_update_app_by_name(h, &a); }())},
        {"db_del_app_by_name", Kind::Change, "R", {"Zq1"}, FN(db_del_app_by_name(h, v[0]))},
        {"db_get_app_info_by_name", Kind::List, "R", {"Zq1"},
         FN([&] { db_app_info* l = db_get_app_info_by_name(h, v[0]); db_free_app_info(l); return l ? 1L : 0L; }())},
        {"db_add_trait", Kind::Change, "---", {"Zq1", "Zq2", "Zq3"},
         FN([&] { db_trait_info t = traitrec(v); return db_add_trait(h, &t); }())},
        {"db_update_traitby_appid", Kind::Change, "---", {"Zq1", "Zq2", "Zq3"},
         FN([&] { db_trait_info t = traitrec(v); return db_update_traitby_appid(h, &t); }())},
        // Assets.
        {"selectSAnameByAssetname", Kind::Buffer, "R", {"Zq1"}, BUF(selectSAnameByAssetname(h, W(v[0]), g_out))},
        {"selectipAddressByAssetname", Kind::Buffer, "R", {"Zq1"},
         BUF(selectipAddressByAssetname(h, W(v[0]), g_out))},
        {"deleteAssetByName", Kind::Change, "R", {"Zq1"}, FN(deleteAssetByName(h, W(v[0])))},
        // Device settings.
        {"autoswitchWorkModeBasicSettingsOn", Kind::Change, "A", {"Zq1"},
         FN(autoswitchWorkModeBasicSettingsOn(h, v[0], 1))},
        {"timesettingBasicSettingsOff", Kind::Change, "A", {"Zq1"}, FN(timesettingBasicSettingsOff(h, v[0]))},
        {"activateNtpBasicSettings", Kind::Change, "A", {"Zq1"}, FN(activateNtpBasicSettings(h, 1, v[0]))},
        {"insertSyslogServerBasicSettings", Kind::Number, "R", {"Zq1"},
         FN(insertSyslogServerBasicSettings(h, v[0], 1, 514))},
        {"deleteSyslogServerBasicSettings", Kind::Change, "R", {"Zq1"},
         FN(deleteSyslogServerBasicSettings(h, v[0], 2, 514))},
        {"updateBypassPowerOn", Kind::Change, "R", {"Zq1"}, FN(updateBypassPowerOn(h, v[0], 1))},
        {"updateBypassFaultOn", Kind::Change, "R", {"Zq1"}, FN(updateBypassFaultOn(h, v[0], 1))},
        {"setRemoteServiceStrategyRuleName", Kind::Change, "RR", {"Zq1", "Zq2"},
         FN(setRemoteServiceStrategyRuleName(h, v[0], v[1]))},
        {"setOnRemoteServiceportStrageMangement", Kind::Change, "R", {"Zq1"},
         FN(setOnRemoteServiceportStrageMangement(h, v[0]))},
        {"setOffRemoteServiceportStrageMangement", Kind::Change, "R", {"Zq1"},
         FN(setOffRemoteServiceportStrageMangement(h, v[0]))},
        // Control policies.
        {"getPolicyIdByName", Kind::Number, "R", {"Zq1"}, FN(getPolicyIdByName(h, W(v[0])))},
        {"deletePolicyByName", Kind::Change, "R", {"Zq1"}, FN(deletePolicyByName(h, W(v[0])))},
        // Asset properties.
        {"set_ipmac_asset_status", Kind::Change, "RR", {"Zq1", "Zq2"},
         FN(set_ipmac_asset_status(h, v[0], v[1], 0, 1, 1))},
        {"get_interfaces_by_devinfo", Kind::Number, "RR", {"Zq1", "Zq2"},
         FN([&] { asset_intface_t* a = nullptr; int n = get_interfaces_by_devinfo(h, v[0], v[1], &a);
                  if (n > 0) devinfo_interfaces_free(h, a); return n; }())},
        {"set_ipmac_asset_info", Kind::Change, "AA", {"Zq1", "Zq2"},
         FN(set_ipmac_asset_info(h, v[0], v[1], 0, 1, 1, 1))},
        {"clear_asset_info", Kind::Change, "AA", {"Zq1", "Zq2"}, FN(clear_asset_info(h, v[0], v[1], 0))},
        {"get_mac_by_ip", Kind::Change, "R", {"Zq1"}, FN(get_mac_by_ip(h, v[0], g_out))},
        // Interfaces.
        {"db_if_insert", Kind::Change, "A", kIf1, FN([&] { auto r = ifrec(v[0]); return db_if_insert(h, &r); }())},
        {"db_if_insert(sub)", Kind::Change, "-RR", {"ethZq1:1", "Zq2", "ethZq3"},
         FN([&] { auto r = ifrec(v[0], v[1], v[2], nullptr, nullptr, DB_IF_SUB); return db_if_insert(h, &r); }())},
        {"db_if_delete", Kind::Change, "A", {"Zq1.1"}, FN([&] { auto r = ifrec(v[0]); return db_if_delete(h, &r); }())},
        {"db_if_set_ip", Kind::Change, "AR", {"ethZq1", "Zq2"},
         FN([&] { auto r = ifrec(v[0], v[1]); return db_if_set_ip(h, &r); }())},
        {"db_if_unset_ip", Kind::Change, "A", kIf1, FN([&] { auto r = ifrec(v[0]); return db_if_unset_ip(h, &r); }())},
        {"db_if_check_ipmask", Kind::Number, "AR", {"ethZq1", "Zq2"},
         FN([&] { auto r = ifrec(v[0], v[1]); return db_if_check_ipmask(h, &r); }()), 0},
        {"db_check_if_by_name", Kind::Number, "A", kIf1,
         FN([&] { auto r = ifrec(v[0]); return db_check_if_by_name(h, &r); }()), 0},
        {"changeModePhyNetInterfaces", Kind::Change, "R", kIf1, FN(changeModePhyNetInterfaces(h, v[0]))},
        {"db_br_addif", Kind::Change, "AR", {"briZq1", "ethZq2"},
         FN([&] { auto r = ifrec(v[0], nullptr, v[1]); return db_br_addif(h, &r); }()), 1, 1151},
        {"db_br_delif", Kind::Change, "AR", {"briZq1", "ethZq2"},
         FN([&] { auto r = ifrec(v[0], nullptr, v[1]); return db_br_delif(h, &r); }()), 1, 1151},
        {"get_Bridge_info_iface", Kind::Number, "AA", {"briZq1", "ethZq2"},
         FN([&] { auto r = ifrec(v[0], nullptr, v[1]); return get_Bridge_info_iface(h, &r); }()), 0},
        {"updateBridgeModeNetInterfaces", Kind::Change, "R", kIf1, FN(updateBridgeModeNetInterfaces(h, v[0], 1))},
        {"sethttpsPhyInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(sethttpsPhyInterfaceNetInterfaces(h, 1, v[0]))},
        {"sethttpsVlanInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(sethttpsVlanInterfaceNetInterfaces(h, 1, v[0]))},
        {"sethttpsSubInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(sethttpsSubInterfaceNetInterfaces(h, 1, v[0]))},
        {"sethttpsBridgeNetInterfaces", Kind::Change, "R", kIf1, FN(sethttpsBridgeNetInterfaces(h, 1, v[0]))},
        {"setsnmpPhyInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(setsnmpPhyInterfaceNetInterfaces(h, 1, v[0]))},
        {"setsnmpVlanInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(setsnmpVlanInterfaceNetInterfaces(h, 1, v[0]))},
        {"setsnmpSubInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(setsnmpSubInterfaceNetInterfaces(h, 1, v[0]))},
        {"setsnmpBridgeNetInterfaces", Kind::Change, "R", kIf1, FN(setsnmpBridgeNetInterfaces(h, 1, v[0]))},
        {"setpingPhyInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(setpingPhyInterfaceNetInterfaces(h, 1, v[0]))},
        {"setpingVlanInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(setpingVlanInterfaceNetInterfaces(h, 1, v[0]))},
        {"setpingSubInterfaceNetInterfaces", Kind::Change, "R", kIf1, FN(setpingSubInterfaceNetInterfaces(h, 1, v[0]))},
        {"setpingBridgeNetInterfaces", Kind::Change, "R", kIf1, FN(setpingBridgeNetInterfaces(h, 1, v[0]))},
        {"db_if_set_access_enable", Kind::Change, "AR", {"ethZq1", "https"},
         FN([&] { auto r = ifrec(v[0], nullptr, nullptr, nullptr, v[1]); return db_if_set_access_enable(h, &r); }())},
        {"db_if_set_access_disable", Kind::Change, "AR", {"ethZq1", "https"},
         FN([&] { auto r = ifrec(v[0], nullptr, nullptr, nullptr, v[1]); return db_if_set_access_disable(h, &r); }())},
        {"db_if_set_dhcpmode", Kind::Change, "A", kIf1,
         FN([&] { auto r = ifrec(v[0]); return db_if_set_dhcpmode(h, &r); }())},
        {"db_if_negmode_update", Kind::Change, "A", kIf1,
         FN([&] { auto r = ifrec(v[0]); return db_if_negmode_update(h, &r); }())},
        {"db_if_stat_update", Kind::Change, "AA", {"ethZq1", "Zq2"},
         FN([&] { auto r = ifrec(v[0], v[1]); return db_if_stat_update(h, &r); }())},
        {"db_if_mtu_update", Kind::Change, "A", kIf1, FN([&] { auto r = ifrec(v[0]); return db_if_mtu_update(h, &r); }())},
        {"db_if_mac_update", Kind::Change, "AR", {"ethZq1", "Zq2"},
         FN([&] { auto r = ifrec(v[0], nullptr, nullptr, v[1]); return db_if_mac_update(h, &r); }())},
        {"db_if_refresh", Kind::Change, "A", kIf1, FN([&] { auto r = ifrec(v[0]); return db_if_refresh(h, &r); }())},
        {"bindVlanTypeInterfaceNetInterfaces", Kind::Change, "RR", {"ethZq1", "Zq2"},
         FN(bindVlanTypeInterfaceNetInterfaces(h, v[0], v[1]))},
        {"setVlanNameInterfaceNetInterfaces", Kind::Change, "RR", {"ethZq1", "Zq2"},
         FN(setVlanNameInterfaceNetInterfaces(h, v[0], v[1]))},
        {"get_interface_connnection_status", Kind::Number, "R", kIf1, FN(get_interface_connnection_status(h, v[0]))},
        // DPI whitelist references.
        {"insertPolicyToDpiWhitelist", Kind::Change, "RR", {"Zq1", "Zq2"},
         FN(insertPolicyToDpiWhitelist(h, v[0], v[1], 1))},
        {"getPolicyToDpiWhitelistPolicyNum", Kind::Number, "R", {"Zq1"}, FN(getPolicyToDpiWhitelistPolicyNum(h, v[0]))},
        // Services and routes.
        {"db_get_srv_info_by_name", Kind::List, "R", {"Zq1"},
         FN([&] { auto* l = db_get_srv_info_by_name(h, W(v[0])); db_free_predefsrv_info(l); return l ? 1L : 0L; }())},
        {"checkServersByName", Kind::Number, "R", {"Zq1"}, FN(checkServersByName(h, W(v[0])))},
        {"insertServersName", Kind::Change, "RR", {"Zq1", "Zq2"}, FN(insertServersName(h, W(v[0]), W(v[1])))},
        {"updateServersName", Kind::Change, "RR", {"Zq1", "Zq2"}, FN(updateServersName(h, W(v[0]), W(v[1])))},
        {"deleteServersByName", Kind::Change, "R", {"Zq1"}, FN(deleteServersByName(h, W(v[0])))},
        {"setServerRules", Kind::Change, "RAAAA", {"SrvA", "Zq2", "Zq3", "Zq4", "Zq5"},
         FN(setServerRules(h, W(v[0]), 1, W(v[1]), W(v[2]), W(v[3]), W(v[4])))},
        {"deleteServerRules", Kind::Change, "R", {"Zq1"}, FN(deleteServerRules(h, W(v[0])))},
        {"setICMPServerRules", Kind::Change, "R", {"Zq1"}, FN(setICMPServerRules(h, W(v[0]), 1))},
        {"insertRouteDatasgateInfo", Kind::Change, "RAA", {"Zq1", "Zq2", "Zq3"},
         FN(insertRouteDatasgateInfo(h, v[0], v[1], v[2], 1, 1))},
        {"updateRouteDatasgateInfo", Kind::Change, "RRR", {"Zq1", "Zq2", "Zq3"},
         FN(updateRouteDatasgateInfo(h, v[0], v[1], v[2], 1, 1, 1))},
        {"deleteRouteDatasgateInfo", Kind::Change, "RAA", {"Zq1", "Zq2", "Zq3"},
         FN(deleteRouteDatasgateInfo(h, v[0], v[1], v[2]))},
        // Session controls.
        {"insertSessionControls", Kind::Number, "RRR", {"Zq1", "Zq2", "Zq3"},
         FN(insertSessionControls(h, 1, 1, v[0], v[1], 1, v[2], 1, 1))},
        // Zones, assets and address pools.
        {"insertSecurityAreas", Kind::Change, "R", {"Zq1"}, FN(insertSecurityAreas(h, W(v[0])))},
        {"deleteSecurityAreas", Kind::Change, "R", {"ZoneA"}, FN(deleteSecurityAreas(h, W(v[0])))},
        {"updateSecurityAreas", Kind::Change, "R", {"Zq1"}, FN(updateSecurityAreas(h, W(v[0]), 1))},
        {"insertMainFrame", Kind::Change, "RR", {"ZoneA", "Zq2"}, FN(insertMainFrame(h, W(v[0]), W(v[1])))},
        {"deleteMainFrame", Kind::Change, "R", {"ZoneA"}, FN(deleteMainFrame(h, W(v[0])))},
        {"select_name_by_interfacename_SA", Kind::Buffer, "R", {"Zq1"},
         BUF(select_name_by_interfacename_SA(h, W(v[0]), g_out))},
        {"selectInterfaceInfoByNameSA", Kind::Number, "R", {"ZoneA"},
         FN(selectInterfaceInfoByNameSA(h, W(v[0]), g_out, 256))},
        {"selectIpaddressInfoByNameSA", Kind::Buffer, "R", {"ZoneA"},
         BUF((g_out[0] = '\0', selectIpaddressInfoByNameSA(h, W(v[0]), g_out, 256)))},
        {"deleteAddressPoolsTableByName", Kind::Change, "A", {"Zq1"}, FN(deleteAddressPoolsTableByName(h, W(v[0])))},
        {"insertAddressPoolsTable", Kind::Change, "RRR", {"Zq1", "Zq2", "Zq3"},
         FN(insertAddressPoolsTable(h, W(v[0]), W(v[1]), W(v[2]), 1, 1))},
        {"addAddressPoolsNameTable", Kind::Change, "R", {"Zq1"}, FN(addAddressPoolsNameTable(h, W(v[0])))},
        {"updateAddressPoolsTableEnable", Kind::Change, "R", {"Zq1"}, FN(updateAddressPoolsTableEnable(h, W(v[0]), 1))},
        {"updateAddressPoolsTableInterface", Kind::Change, "RR", {"Zq1", "Zq2"},
         FN(updateAddressPoolsTableInterface(h, W(v[0]), W(v[1])))},
        {"updateAddressPoolsTableIp", Kind::Change, "RR", {"Zq1", "Zq2"},
         FN(updateAddressPoolsTableIp(h, W(v[0]), W(v[1])))},
        {"select_interface_by_name_AddPools", Kind::Buffer, "R", {"Zq1"},
         BUF(select_interface_by_name_AddPools(h, W(v[0]), g_out))},
        {"select_ipAddress_by_name_ipAdd", Kind::Buffer, "R", {"Zq1"},
         BUF(select_ipAddress_by_name_ipAdd(h, W(v[0]), g_out))},
        {"get_address_type_by_name", Kind::Number, "R", {"Zq1"}, FN(get_address_type_by_name(h, W(v[0])))},
    };
}

std::string replace_all(std::string s, const std::string& from, const std::string& to) {
    for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size())) {
        s.replace(at, from.size(), to);
    }
    return s;
}

size_t occurrences(const std::string& s, const std::string& what) {
    size_t n = 0;
    for (size_t at = s.find(what); at != std::string::npos; at = s.find(what, at + what.size())) {
        ++n;
    }
    return n;
}

class BadInputTest : public LibraryTest {
protected:
    void SetUp() override {
        LibraryTest::SetUp();
        log_off();  // the long statements would only fill the capture
        // Rows that let the look-up-first functions reach their second statement.
        truncate({"SecurityAreas", "SecurityAreaInterfaces", "Servers", "ServerRules", "NetInterfaces",
                  "AddressPools", "Assets", "Apps", "Traits", "RouteDatas", "Syslogs"});
        exec("insert into SecurityAreas (name) values ('ZoneA')");
        exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'ethZq1')");
        exec("insert into Servers (name) values ('SrvA')");
        clear();
    }

    // Runs one call; returns its result and leaves its statements in *sent.
    long run(const Case& c, const Values& v, std::vector<std::string>* out) {
        clear();
        const long r = c.call(&h, v);
        *out = sent();
        return r;
    }

    void check_argument(const Case& c, size_t i) {
        SCOPED_TRACE(std::string(c.name) + " argument " + std::to_string(i + 1));
        std::vector<std::string> stmts;
        Values v = c.base;

        // NULL.
        if (c.nulls[i] != '-') {
            v[i] = nullptr;
            const long r = run(c, v, &stmts);
            if (c.nulls[i] == 'R') {
                EXPECT_EQ(r, failure(c.kind));
                EXPECT_TRUE(stmts.empty()) << stmts.front();
            } else {
                EXPECT_TRUE(documented(c.kind, r)) << r;
            }
        }
        // Empty.
        v[i] = "";
        EXPECT_TRUE(documented(c.kind, run(c, v, &stmts)));

        // The ordinary value, to find the statement that carries it.
        const std::string probe = c.base[i];
        v[i] = probe.c_str();
        run(c, v, &stmts);
        size_t at = 0;
        while (at < stmts.size() && stmts[at].find(probe) == std::string::npos) {
            ++at;
        }
        size_t pad = 2000;  // not carried: any long value
        size_t times = 1;
        size_t tail = 0;  // characters after the value in its statement
        if (at < stmts.size()) {
            times = occurrences(stmts[at], probe);
            pad = (kStatementMax - stmts[at].size()) / times;
            tail = stmts[at].size() - stmts[at].rfind(probe) - probe.size();
        }
        // Filling; one character too long; cut inside the value itself.
        for (size_t extra : {size_t{0}, size_t{1}, tail + 1}) {
            SCOPED_TRACE(extra == 0 ? "filling" : extra == 1 ? "one over" : "cut in the value");
            const std::string value = probe + std::string(pad + extra, 'x');
            v[i] = value.c_str();
            std::vector<std::string> longer;
            const long r = run(c, v, &longer);
            EXPECT_TRUE(documented(c.kind, r)) << r;
            for (const std::string& s : longer) {
                EXPECT_LE(s.size(), c.max);
            }
            if (at >= stmts.size()) {
                continue;
            }
            ASSERT_GT(longer.size(), at);
            const std::string full = replace_all(stmts[at], probe, value);
            if (extra == 0) {
                EXPECT_EQ(longer[at], full);
                if (times == 1) {
                    EXPECT_EQ(longer[at].size(), kStatementMax);
                }
            } else {
                EXPECT_EQ(longer[at], full.substr(0, kStatementMax));
                if (extra == tail + 1) {  // the value's closing quote is gone
                    EXPECT_EQ(r, c.cut == 1 ? failure(c.kind) : c.cut);
                }
            }
        }
    }
};

TEST_F(BadInputTest, EveryStringArgumentOfEveryFunction) {
    for (const Case& c : cases()) {
        ASSERT_EQ(strlen(c.nulls), c.base.size()) << c.name;
        for (size_t i = 0; i < c.base.size(); ++i) {
            check_argument(c, i);
        }
    }
}

// The handle argument: NULL, and a blank (zeroed, never initialised) handle.
// Every function answers what it answers when its statement cannot run (or,
// for NULL, its failure value when it tests the handle), and sends nothing.
TEST_F(BadInputTest, NullAndBlankHandles) {
    std::vector<Case> all = cases();
    const std::vector<std::pair<const char*, Call>> numeric = {
        {"get_defend_switch_status", FN(get_defend_switch_status(h, 1))},
        {"set_defend_switch_status", FN(set_defend_switch_status(h, 1, 1))},
        {"set_defend_switch_by_nameId", FN(set_defend_switch_by_nameId(h, 1, 1, 1))},
        {"get_defend_attack_rules", FN([&] { attack_rule_t r[4]; return get_defend_attack_rules(h, 1, r); }())},
        {"db_del_trait_by_appid", FN(db_del_trait_by_appid(h, 1))},
        {"db_get_trait_info_by_appid", FN(db_get_trait_info_by_appid(h, 1) == nullptr ? -1 : 0)},
        {"setWorkModeBasicSettings", FN(setWorkModeBasicSettings(h, 1))},
        {"autoswitchWorkModeBasicSettingsOff", FN(autoswitchWorkModeBasicSettingsOff(h, 1))},
        {"insertWorkModeBasicSettings", FN(insertWorkModeBasicSettings(h, 1))},
        {"setSyslogTurnBasicSettings", FN(setSyslogTurnBasicSettings(h, 1))},
        {"getPolicyNumBySerAPPType", FN(getPolicyNumBySerAPPType(h))},
        {"set_arpspoof_status", FN(set_arpspoof_status(h, 1, 1))},
        {"get_arpspoof_status", FN(get_arpspoof_status(h, 1))},
        {"get_ipmac_asset_info", FN([&] { asset_info_t* a = nullptr; return get_ipmac_asset_info(h, 1, &a); }())},
        {"db_if_delete_all", FN(db_if_delete_all(h))},
        {"deletePolicyToDpiWhitelistSid", FN(deletePolicyToDpiWhitelistSid(h, 1))},
        {"deletePolicyToDpiWhitelistAll", FN(deletePolicyToDpiWhitelistAll(h))},
        {"selectPolicyToDpiWhitelistById", FN(selectPolicyToDpiWhitelistById(h, 1))},
        {"selectPolicyToDpiWhitelistBySid", FN(selectPolicyToDpiWhitelistBySid(h, 1))},
        {"getRouteDatasgateInfoByIdx", FN([&] { db_route_info r{}; r.routeId = 1; return getRouteDatasgateInfoByIdx(h, &r); }())},
        {"deleteRouteDatasAllInfo", FN(deleteRouteDatasAllInfo(h))},
        {"deleteSessionControls", FN(deleteSessionControls(h, 1))},
        {"updateSessionControls", FN(updateSessionControls(h, 1, 1, 1, 1, 1))},
        {"util_db_query_commonSecurityAreas", FN(util_db_query_commonSecurityAreas(h))},
        {"util_db_query_commonSecurityAreaInterfaces", FN(util_db_query_commonSecurityAreaInterfaces(h))},
        {"util_db_query_commonServers", FN(util_db_query_commonServers(h))},
        {"util_db_query_commonServerRules", FN(util_db_query_commonServerRules(h))},
        {"util_db_query_commonAddressPools", FN(util_db_query_commonAddressPools(h))},
    };
    for (const auto& n : numeric) {
        all.push_back({n.first, Kind::Number, "", {}, n.second});
    }
    db_handle_t blank{};
    for (const Case& c : all) {
        for (db_handle_t* handle : {static_cast<db_handle_t*>(nullptr), &blank}) {
            SCOPED_TRACE(std::string(c.name) + (handle ? " blank handle" : " NULL handle"));
            clear();
            const long r = c.call(handle, c.base);
            const long cannot_run = c.cut == 1 ? failure(c.kind) : c.cut;
            // A function that tests the handle itself refuses NULL with its failure value.
            EXPECT_TRUE(r == cannot_run || (handle == nullptr && r == failure(c.kind))) << r;
            EXPECT_TRUE(sent().empty());
        }
    }
}

// Bytes of every value in a name: the statement carries them verbatim (a
// quote or NUL changes it, nothing is escaped), and the results stay documented.
TEST_F(BadInputTest, EveryByteValueReachesTheStatementVerbatim) {
    std::string all;
    for (int b = 1; b < 256; ++b) {
        if (b != '\'' && b != '\\') {
            all.push_back(static_cast<char>(b));
        }
    }
    EXPECT_EQ(updateSecurityAreas(&h, W(all.c_str()), 1), 0);
    ASSERT_EQ(sent().size(), 1u);
    EXPECT_NE(sent()[0].find(all), std::string::npos);
    clear();
    EXPECT_EQ(updateSecurityAreas(&h, W("a'b"), 1), -1);  // the quote ends the value early
    EXPECT_EQ(sent(), std::vector<std::string>{"UPDATE SecurityAreas SET enable = 1 WHERE name = 'a'b';"});
    EXPECT_EQ(checkServersByName(&h, W("%s%n%d")), 0);  // a value is never a format
}

}  // namespace
