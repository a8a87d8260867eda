// Every string argument of every exported function, against the private
// server: NULL where the function checks it, the empty string, a value that
// makes its statement exactly fill the 1024-byte buffer and one that makes it
// overflow by one. The result is one the function documents; the statement
// sent is the full text or, when too long, its first 1023 characters; ASan
// proves that nothing is written past any buffer.
#include <deque>
#include <sstream>

#include "harness.h"

using namespace testbed;

namespace {

constexpr size_t kStatementMax = 1023;  // characters a statement can hold

// The results a function documents:
//  Change: 0 or -1;  Number: an identifier or a count, -1 on failure;
//  Buffer: the caller's buffer (1) or NULL (0);  List: a heap list / array (1) or none (0).
enum class Kind { Change, Number, Buffer, List };

long failure(Kind k) { return (k == Kind::Change || k == Kind::Number) ? -1 : 0; }

bool documented(Kind k, long r) { return k == Kind::Number ? r >= -1 : r == 0 || r == (k == Kind::Change ? -1 : 1); }

char* W(const char* s) { return const_cast<char*>(s); }

using Values = std::vector<char*>;

struct Case {
    const char* name;
    Kind kind;
    // One letter per string argument: R refused when NULL (failure, nothing
    // sent), A accepted when NULL (a documented result), - not tried.
    const char* nulls;
    Values base;  // ordinary values, one per string argument
    std::function<long(db_handle_t*, const Values&)> call;
    long cut;  // result when the value's statement is cut, or the handle cannot run it
    size_t max = kStatementMax;  // longest statement (the bridge member lists have a larger buffer)
};

// "a b c" as values (their text lives to the end of the program).
Values split(const std::string& s) {
    static std::deque<std::string> store;
    Values v;
    std::istringstream in(s);
    for (std::string word; in >> word;) v.push_back(W(store.emplace_back(word).c_str()));
    return v;
}

Case row(const char* name, Kind k, const char* nulls, const char* base, decltype(Case::call) call) {
    return {name, k, nulls, split(base), std::move(call), failure(k)};
}
Case with(Case c, long cut, size_t max = kStatementMax) { return c.cut = cut, c.max = max, c; }

// Caller buffers, larger than any cell the schema can hold.
char g_out[8192];
long buffer_result(const void* r) { return r == nullptr ? 0 : (r == g_out ? 1 : 2); }
template <typename T, typename Free> long listed(T* l, Free release) { return release(l), l != nullptr; }

// Records naming the values given: a zeroed record, reused call after call (the
// calls run one after another).
_db_if_info* ifrec(char* name, char* ip = nullptr, char* pif = nullptr, char* mac = nullptr, char* acc = nullptr,
                   int type = 0) {
    static _db_if_info r;
    r = {};
    r.type = type, r.pname = name, r.ipmask = ip, r.pifname = pif, r.mac = mac, r.access_ctrl = acc, r.speed = 100;
    return &r;
}
db_app_info* apprec(const Values& v) {
    static db_app_info a;
    a = {}, a.pname = v[0], a.sport = v[1], a.cport = v[2], a.ppdname = v[3], a.desc = v[4], a.type = 1;
    return &a;
}
db_trait_info* traitrec(const Values& v) {
    static db_trait_info t;
    t = {}, t.appid = 1, t.toffset = v[0], t.trait = v[1], t.depth = v[2];
    return &t;
}

// Rows: kind, NULL handling and ordinary values of the string arguments, the
// function and its arguments after the handle h (v[i]: the i-th string argument).
#define FN(expr) [](db_handle_t* h, const Values& v) -> long { (void)v; return (expr); }
#define ROW(kind, nulls, base, fn, ...) row(#fn, Kind::kind, nulls, base, FN(fn(h, __VA_ARGS__)))
#define BUF(nulls, base, fn, ...) row(#fn, Kind::Buffer, nulls, base, FN(buffer_result(fn(h, __VA_ARGS__))))
#define LIST(nulls, base, fn, release, ...) row(#fn, Kind::List, nulls, base, FN(listed(fn(h, __VA_ARGS__), release)))
#define IFR(kind, nulls, base, fn, ...) ROW(kind, nulls, base, fn, ifrec(__VA_ARGS__))
// No string argument: fn(h, ...), fn(h), any call.
#define NUM(fn, ...) ROW(Number, "", "", fn, __VA_ARGS__)
#define HND(fn, expr) row(#fn, Kind::Number, "", "", FN(expr))

std::vector<Case> cases() {
    return {
        // Applications and traits.
        ROW(Change, "R----", "Zq1 Zq2 Zq3 Zq4 Zq5", db_add_app, apprec(v)),
        ROW(Change, "R----", "Zq1 Zq2 Zq3 Zq4 Zq5", db_update_app_by_name, apprec(v)),
        ROW(Change, "R", "Zq1", db_del_app_by_name, v[0]),
        LIST("R", "Zq1", db_get_app_info_by_name, db_free_app_info, v[0]),
        ROW(Change, "---", "Zq1 Zq2 Zq3", db_add_trait, traitrec(v)),
        ROW(Change, "---", "Zq1 Zq2 Zq3", db_update_traitby_appid, traitrec(v)),
        // Assets.
        BUF("R", "Zq1", selectSAnameByAssetname, v[0], g_out), BUF("R", "Zq1", selectipAddressByAssetname, v[0], g_out),
        ROW(Change, "R", "Zq1", deleteAssetByName, v[0]),
        // Device settings.
        ROW(Change, "A", "Zq1", autoswitchWorkModeBasicSettingsOn, v[0], 1),
        ROW(Change, "A", "Zq1", timesettingBasicSettingsOff, v[0]),
        ROW(Change, "A", "Zq1", activateNtpBasicSettings, 1, v[0]),
        ROW(Number, "R", "Zq1", insertSyslogServerBasicSettings, v[0], 1, 514),
        ROW(Change, "R", "Zq1", deleteSyslogServerBasicSettings, v[0], 2, 514),
        ROW(Change, "R", "Zq1", updateBypassPowerOn, v[0], 1), ROW(Change, "R", "Zq1", updateBypassFaultOn, v[0], 1),
        ROW(Change, "RR", "Zq1 Zq2", setRemoteServiceStrategyRuleName, v[0], v[1]),
        ROW(Change, "R", "Zq1", setOnRemoteServiceportStrageMangement, v[0]),  // and Off: the same statement
        // Control policies.
        ROW(Number, "R", "Zq1", getPolicyIdByName, v[0]), ROW(Change, "R", "Zq1", deletePolicyByName, v[0]),
        // Asset properties.
        ROW(Change, "RR", "Zq1 Zq2", set_ipmac_asset_status, v[0], v[1], 0, 1, 1),
        row("get_interfaces_by_devinfo", Kind::Number, "RR", "Zq1 Zq2",
            FN([&] { asset_intface_t* a = nullptr; int n = get_interfaces_by_devinfo(h, v[0], v[1], &a);
                     if (n > 0) devinfo_interfaces_free(h, a); return n; }())),
        ROW(Change, "AA", "Zq1 Zq2", set_ipmac_asset_info, v[0], v[1], 0, 1, 1, 1),
        ROW(Change, "AA", "Zq1 Zq2", clear_asset_info, v[0], v[1], 0),
        ROW(Change, "R", "Zq1", get_mac_by_ip, v[0], g_out),
        // Interfaces.
        IFR(Change, "A", "ethZq1", db_if_insert, v[0]), IFR(Change, "A", "ethZq1", db_if_unset_ip, v[0]),
        IFR(Change, "-RR", "ethZq1:1 Zq2 ethZq3", db_if_insert, v[0], v[1], v[2], nullptr, nullptr, DB_IF_SUB),
        IFR(Change, "A", "Zq1.1", db_if_delete, v[0]), IFR(Change, "AR", "ethZq1 Zq2", db_if_set_ip, v[0], v[1]),
        with(IFR(Number, "AR", "ethZq1 Zq2", db_if_check_ipmask, v[0], v[1]), 0),
        with(IFR(Number, "A", "ethZq1", db_check_if_by_name, v[0]), 0),
        ROW(Change, "R", "ethZq1", changeModePhyNetInterfaces, v[0]),
        with(IFR(Change, "AR", "briZq1 ethZq2", db_br_addif, v[0], nullptr, v[1]), -1, 1151),
        with(IFR(Change, "AR", "briZq1 ethZq2", db_br_delif, v[0], nullptr, v[1]), -1, 1151),
        with(IFR(Number, "AA", "briZq1 ethZq2", get_Bridge_info_iface, v[0], nullptr, v[1]), 0),
        ROW(Change, "R", "ethZq1", updateBridgeModeNetInterfaces, v[0], 1),  // the access-service setters: their tests
        IFR(Change, "AR", "ethZq1 https", db_if_set_access_enable, v[0], nullptr, nullptr, nullptr, v[1]),
        IFR(Change, "AR", "ethZq1 https", db_if_set_access_disable, v[0], nullptr, nullptr, nullptr, v[1]),
        IFR(Change, "A", "ethZq1", db_if_set_dhcpmode, v[0]), IFR(Change, "A", "ethZq1", db_if_negmode_update, v[0]),
        IFR(Change, "AA", "ethZq1 Zq2", db_if_stat_update, v[0], v[1]),
        IFR(Change, "A", "ethZq1", db_if_mtu_update, v[0]), IFR(Change, "A", "ethZq1", db_if_refresh, v[0]),
        IFR(Change, "AR", "ethZq1 Zq2", db_if_mac_update, v[0], nullptr, nullptr, v[1]),
        ROW(Change, "RR", "ethZq1 Zq2", bindVlanTypeInterfaceNetInterfaces, v[0], v[1]),
        ROW(Change, "RR", "ethZq1 Zq2", setVlanNameInterfaceNetInterfaces, v[0], v[1]),
        ROW(Number, "R", "ethZq1", get_interface_connnection_status, v[0]),
        // DPI whitelist references.
        ROW(Change, "RR", "Zq1 Zq2", insertPolicyToDpiWhitelist, v[0], v[1], 1),
        ROW(Number, "R", "Zq1", getPolicyToDpiWhitelistPolicyNum, v[0]),
        // Services and routes.
        LIST("R", "Zq1", db_get_srv_info_by_name, db_free_predefsrv_info, v[0]),
        ROW(Number, "R", "Zq1", checkServersByName, v[0]), ROW(Change, "RR", "Zq1 Zq2", insertServersName, v[0], v[1]),
        ROW(Change, "RR", "Zq1 Zq2", updateServersName, v[0], v[1]), ROW(Change, "R", "Zq1", deleteServersByName, v[0]),
        ROW(Change, "RAAAA", "SrvA Zq2 Zq3 Zq4 Zq5", setServerRules, v[0], 1, v[1], v[2], v[3], v[4]),
        ROW(Change, "R", "Zq1", deleteServerRules, v[0]), ROW(Change, "R", "Zq1", setICMPServerRules, v[0], 1),
        ROW(Change, "RAA", "Zq1 Zq2 Zq3", insertRouteDatasgateInfo, v[0], v[1], v[2], 1, 1),
        ROW(Change, "RRR", "Zq1 Zq2 Zq3", updateRouteDatasgateInfo, v[0], v[1], v[2], 1, 1, 1),
        ROW(Change, "RAA", "Zq1 Zq2 Zq3", deleteRouteDatasgateInfo, v[0], v[1], v[2]),
        // Session controls.
        ROW(Number, "RRR", "Zq1 Zq2 Zq3", insertSessionControls, 1, 1, v[0], v[1], 1, v[2], 1, 1),
        // Zones, assets and address pools.
        ROW(Change, "R", "Zq1", insertSecurityAreas, v[0]), ROW(Change, "R", "ZoneA", deleteSecurityAreas, v[0]),
        ROW(Change, "R", "Zq1", updateSecurityAreas, v[0], 1), ROW(Number, "R", "Zq1", get_address_type_by_name, v[0]),
        ROW(Change, "RR", "ZoneA Zq2", insertMainFrame, v[0], v[1]), ROW(Change, "R", "ZoneA", deleteMainFrame, v[0]),
        BUF("R", "Zq1", select_name_by_interfacename_SA, v[0], g_out),
        row("selectInterfaceInfoByNameSA", Kind::Number, "R", "ZoneA",  // its member result set: the zone tests
            FN([&] { Unreported u; return selectInterfaceInfoByNameSA(h, v[0], g_out, 256); }())),
        BUF("R", "ZoneA", selectIpaddressInfoByNameSA, v[0], (g_out[0] = '\0', g_out), 256),
        ROW(Change, "A", "Zq1", deleteAddressPoolsTableByName, v[0]),
        ROW(Change, "RRR", "Zq1 Zq2 Zq3", insertAddressPoolsTable, v[0], v[1], v[2], 1, 1),
        ROW(Change, "R", "Zq1", addAddressPoolsNameTable, v[0]),
        ROW(Change, "R", "Zq1", updateAddressPoolsTableEnable, v[0], 1),
        ROW(Change, "RR", "Zq1 Zq2", updateAddressPoolsTableInterface, v[0], v[1]),
        ROW(Change, "RR", "Zq1 Zq2", updateAddressPoolsTableIp, v[0], v[1]),
        BUF("R", "Zq1", select_interface_by_name_AddPools, v[0], g_out),
        BUF("R", "Zq1", select_ipAddress_by_name_ipAdd, v[0], g_out),
        // No string argument: only the handle is tried, on the readers (a single-statement writer's handle
        // path is the statement layer's, tried above and below; the table dumps share one, tried by the
        // family tests).
        NUM(get_defend_switch_status, 1), NUM(get_arpspoof_status, 1), NUM(selectPolicyToDpiWhitelistById, 1),
        NUM(selectPolicyToDpiWhitelistBySid, 1), HND(getPolicyNumBySerAPPType, getPolicyNumBySerAPPType(h)),
        HND(db_get_trait_info_by_appid, db_get_trait_info_by_appid(h, 1) ? 0 : -1),
        HND(get_ipmac_asset_info, [&] { asset_info_t* a = nullptr; return get_ipmac_asset_info(h, 1, &a); }()),
        HND(getRouteDatasgateInfoByIdx,
            [&] { db_route_info r{}; r.routeId = 1; return getRouteDatasgateInfoByIdx(h, &r); }()),
    };
}

std::string replace_all(std::string s, const std::string& from, const std::string& to) {
    for (size_t at = s.find(from); at != std::string::npos; at = s.find(from, at + to.size()))
        s.replace(at, from.size(), to);
    return s;
}

void check_argument(db_handle_t* h, const Case& c, size_t i) {
    SCOPED_TRACE(std::string(c.name) + " argument " + std::to_string(i + 1));
    Values v = c.base;
    auto run = [&](const char* value) {  // the call with argument i set to value
        v[i] = W(value);
        clear();
        return c.call(h, v);
    };
    // NULL: refused (the failure value, nothing sent) or accepted (a documented result).
    const long r = c.nulls[i] == '-' ? 0 : run(nullptr);
    EXPECT_TRUE(c.nulls[i] != 'R' || (r == failure(c.kind) && statements().empty())) << r;
    EXPECT_TRUE(documented(c.kind, r) && documented(c.kind, run(""))) << r;  // and the empty string

    // The ordinary value, to find the statement that carries it.
    const std::string probe = c.base[i];
    run(probe.c_str());
    const std::vector<std::string> ordinary = statements();
    size_t at = 0;
    while (at < ordinary.size() && ordinary[at].find(probe) == std::string::npos) ++at;
    const bool carried = at < ordinary.size();
    const std::string stmt = carried ? ordinary[at] : "";
    // How often the value appears, the padding that fills the statement (any
    // long value when not carried) and the characters after the value.
    const size_t times = carried ? replace_all(stmt, probe, probe + "x").size() - stmt.size() : 1;
    const size_t pad = carried ? (c.max - stmt.size()) / times : 2000;
    const size_t tail = carried ? stmt.size() - stmt.rfind(probe) - probe.size() : 0;
    for (size_t extra : {size_t{0}, size_t{1}, tail + 1}) {
        SCOPED_TRACE(extra == 0 ? "filling" : extra == 1 ? "one over" : "cut in the value");
        const std::string value = probe + std::string(pad + extra, 'x'), full = replace_all(stmt, probe, value);
        const long r = run(value.c_str());
        const std::vector<std::string> stmts = statements();
        EXPECT_TRUE(documented(c.kind, r)) << r;
        if (kSafe && carried && extra > 0) {  // refused whole: no part of the over-long statement is sent
            for (const std::string& s : stmts) EXPECT_NE(full.rfind(s, 0), 0u) << s;
            EXPECT_EQ(r, c.cut);
            continue;
        }
        for (const std::string& s : stmts) EXPECT_LE(s.size(), c.max);
        if (!carried) continue;
        ASSERT_GT(stmts.size(), at);
        EXPECT_EQ(stmts[at], full.substr(0, c.max));  // filling: all of it
        if (extra == 0 && times == 1) { EXPECT_EQ(stmts[at].size(), c.max); }
        if (extra == tail + 1) { EXPECT_EQ(r, c.cut); }  // the value's closing quote is gone
    }
}

// Also the handle argument: NULL, and a blank (zeroed, never initialised)
// handle. Every function answers what it answers when its statement cannot run
// (or, for NULL, its failure value when it tests the handle), and sends nothing.
TEST_F(LibraryTest, EveryStringArgumentOfEveryFunction) {
    log_off();  // the long statements would only fill the capture
    // Rows that let the look-up-first functions reach their second statement.
    truncate({"SecurityAreas", "SecurityAreaInterfaces", "Servers", "ServerRules", "NetInterfaces", "AddressPools",
              "Assets", "Apps", "Traits", "RouteDatas", "Syslogs"});
    exec("insert into SecurityAreas (name) values ('ZoneA')");
    exec("insert into SecurityAreaInterfaces (securityAreaId, interfaceName) values (1, 'ethZq1')");
    exec("insert into Servers (name) values ('SrvA')");
    db_handle_t blank{};
    for (const Case& c : cases()) {
        for (size_t i = 0; i < c.base.size(); ++i) check_argument(&h, c, i);
        for (db_handle_t* handle : {static_cast<db_handle_t*>(nullptr), &blank}) {
            SCOPED_TRACE(std::string(c.name) + (handle ? " blank handle" : " NULL handle"));
            clear();
            const long r = c.call(handle, c.base);
            EXPECT_TRUE(r == c.cut || (handle == nullptr && r == failure(c.kind))) << r;
            EXPECT_TRUE(sent().empty());
        }
    }
}

// Bytes of every value in a name: the statement carries them verbatim (a
// quote changes it in the default profile, nothing is escaped), and a value is
// never a format.
TEST_F(LibraryTest, EveryByteValueReachesTheStatement) {
    std::string all;
    for (int b = 1; b < 256; ++b) all += std::string(b != '\'' && b != '\\', static_cast<char>(b));  // 0 or 1 of it
    EXPECT_EQ(updateSecurityAreas(&h, W(all.c_str()), 1), 0);
    // Harmless between quotes: not escaped either.
    EXPECT_EQ(sent(), (std::vector<std::string>{"UPDATE SecurityAreas SET enable = 1 WHERE name = '" + all + "';"}));
    EXPECT_EQ(checkServersByName(&h, W("%s%n%d")), 0);
    if (kSafe) return;  // the safe tests store and find such names exactly
    clear();
    EXPECT_EQ(insertSecurityAreas(&h, W("it's \"q\" \\")), -1);  // the quote ends the value early
    EXPECT_EQ(sent()[0], "select securityAreaId from SecurityAreas where name= 'it's \"q\" \\';");
}

// db_query and db_store_result given what they should not be: each gives its
// failure result (a SELECT through db_query runs and drops its rows), logs
// what it must, and the handle still answers the next statement.
TEST_F(LibraryTest, StatementLayerSurvivesBadCalls) {
    db_handle_t no_conn{nullptr, 1, h.mutex}, no_mutex{h.conn, 1, nullptr};
    const std::string huge = "select '" + std::string(4 << 20, 'x') + "'", bad = "Data base query faild: ";
    // handle, statement, through db_store_result, result (0 ran, -1 failed), start of the one error text ("" none)
    const struct { db_handle_t* handle; std::string cmd; bool store; int result; std::string error; } calls[] = {
        {nullptr, "do 1", false, -1, ""}, {&no_conn, "do 1", false, -1, ""}, {&no_mutex, "do 1", true, -1, ""},
        {&h, "", false, -1, bad + "Query was empty\n"}, {&h, huge, false, 0, ""}, {&h, huge, true, 0, ""},
        {&h, "insert into Servers (name) values ('x')", true, -1, "Data base store result: \n"},
        {&h, "\xff\xfe;", true, -1, bad + "You have an error in your SQL syntax"}};
    for (const auto& c : calls) {
        SCOPED_TRACE(c.cmd.substr(0, 40) + (c.store ? " (store)" : " (query)"));
        clear();
        void* res = c.store ? db_store_result(c.handle, c.cmd.c_str()) : nullptr;
        EXPECT_EQ(c.store ? (res ? 0 : -1) : db_query(c.handle, c.cmd.c_str()), c.result);
        mysql_free_result(static_cast<MYSQL_RES*>(res));
        const std::vector<std::string> errors = texts(3);
        EXPECT_EQ(errors.size(), c.error.empty() ? 0u : 1u);
        EXPECT_EQ((errors.empty() ? "" : errors[0]).rfind(c.error, 0), 0u);
        EXPECT_TRUE(c.handle == &h ? sent().size() == 1 : sent().empty() && logged(7, "Invalid param\n"));
        EXPECT_EQ(h.flag & 1u, 1u);  // a failed statement keeps the connection
        EXPECT_EQ(db_query(&h, "do 1"), 0);  // no rows left unread: the next statement runs
    }
}

}  // namespace
