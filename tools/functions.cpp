// The declarative table of the functions util-db can call: each exported table
// function with the names of its parameters ("name!" marks a caller buffer
// that the function fills). Records are described once, field by field.
#include <stddef.h>

#include "cli.h"

namespace cli {

struct RecordBase {
    static constexpr bool is_array = false;
    static constexpr size_t capacity = 0;
};

#define INT_FIELD(T, f) Field{#f, Field::Int, offsetof(T, f), 0}
#define STR_FIELD(T, f) Field{#f, Field::Str, offsetof(T, f), 0}
#define CHARS_FIELD(T, f) Field{#f, Field::Chars, offsetof(T, f), sizeof(static_cast<T*>(nullptr)->f)}

template <>
struct Record<struct _db_if_info> : RecordBase {
    using T = struct _db_if_info;
    static const char* name() { return "_db_if_info*"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {
            INT_FIELD(T, type),    CHARS_FIELD(T, name),      STR_FIELD(T, pname),   STR_FIELD(T, mac),
            INT_FIELD(T, dhcp_mode), STR_FIELD(T, ipmask),    INT_FIELD(T, status),  INT_FIELD(T, confer),
            INT_FIELD(T, speed),   STR_FIELD(T, duplex),      INT_FIELD(T, mtu),     INT_FIELD(T, vlanId),
            INT_FIELD(T, vlanType), INT_FIELD(T, subIndex),   STR_FIELD(T, pifname), CHARS_FIELD(T, ifname_get),
            STR_FIELD(T, access_ctrl)};
        return f;
    }
};

template <>
struct Record<struct db_route_info> : RecordBase {
    using T = struct db_route_info;
    static const char* name() { return "db_route_info*"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {INT_FIELD(T, routeId),          CHARS_FIELD(T, destIpMask),
                                             CHARS_FIELD(T, gateWayNextJump), CHARS_FIELD(T, outInterfaceName),
                                             INT_FIELD(T, priority),         INT_FIELD(T, manageScope)};
        return f;
    }
};

template <>
struct Record<struct db_predefsrv_info> : RecordBase {
    using T = struct db_predefsrv_info;
    static const char* name() { return "db_predefsrv_info"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {STR_FIELD(T, pname), INT_FIELD(T, minsport), INT_FIELD(T, maxsport),
                                             INT_FIELD(T, mindport), INT_FIELD(T, maxdport)};
        return f;
    }
    static void free_list(T* list) { db_free_predefsrv_info(list); }
};

template <>
struct Record<db_app_info> : RecordBase {
    using T = db_app_info;
    static const char* name() { return "db_app_info"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {INT_FIELD(T, appid),   STR_FIELD(T, pname),   INT_FIELD(T, type),
                                             STR_FIELD(T, sport),   STR_FIELD(T, cport),   INT_FIELD(T, inherit),
                                             STR_FIELD(T, ppdname), STR_FIELD(T, desc)};
        return f;
    }
    static void free_list(T* list) { db_free_app_info(list); }
};

template <>
struct Record<db_trait_info> : RecordBase {
    using T = db_trait_info;
    static const char* name() { return "db_trait_info"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {INT_FIELD(T, traitid), INT_FIELD(T, appid), STR_FIELD(T, toffset),
                                             STR_FIELD(T, trait), STR_FIELD(T, depth)};
        return f;
    }
    static void free_list(T* list) { db_free_trait_info(list); }
};

template <>
struct Record<asset_info_t> : RecordBase {
    using T = asset_info_t;
    static const char* name() { return "asset_info_t"; }
    static const std::vector<Field>& fields() {
        // assetId is never filled by the library: not shown.
        static const std::vector<Field> f = {CHARS_FIELD(T, ipAddress), CHARS_FIELD(T, macAddress)};
        return f;
    }
    static void free_array(db_handle_t* h, T* a) { ipmac_asset_free(h, a); }
};

template <>
struct Record<asset_intface_t> : RecordBase {
    using T = asset_intface_t;
    static const char* name() { return "asset_intface_t"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {CHARS_FIELD(T, interfaceName)};
        return f;
    }
    static void free_array(db_handle_t* h, T* a) { devinfo_interfaces_free(h, a); }
};

template <>
struct Record<attack_rule_t> : RecordBase {
    using T = attack_rule_t;
    static constexpr bool is_array = true;   // the caller's array, filled without a bound
    static constexpr size_t capacity = 4096; // room for every rule of a type
    static const char* name() { return "attack_rule_t*"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {INT_FIELD(T, attackNameId), INT_FIELD(T, enable), INT_FIELD(T, threshold)};
        return f;
    }
};

#define FN(f, ...) entry(#f, &f, {__VA_ARGS__})

const std::vector<Entry>& functions() {
    static const std::vector<Entry> table = {
        // Statements
        FN(db_query, "cmd"),
        // Network interfaces
        FN(db_if_insert, "if_info"),
        FN(db_if_delete, "if_info"),
        FN(db_if_set_ip, "if_info"),
        FN(db_if_unset_ip, "if_info"),
        FN(db_if_check_ipmask, "if_info"),
        FN(db_if_delete_all),
        FN(db_check_if_by_name, "if_info"),
        FN(changeModePhyNetInterfaces, "interfaceName"),
        FN(db_br_addif, "if_info"),
        FN(db_br_delif, "if_info"),
        FN(get_Bridge_info_iface, "if_info"),
        FN(updateBridgeModeNetInterfaces, "interfaceName", "status"),
        FN(sethttpsPhyInterfaceNetInterfaces, "https", "interfaceName"),
        FN(sethttpsVlanInterfaceNetInterfaces, "https", "interfaceName"),
        FN(sethttpsSubInterfaceNetInterfaces, "https", "interfaceName"),
        FN(sethttpsBridgeNetInterfaces, "https", "interfaceName"),
        FN(setsnmpPhyInterfaceNetInterfaces, "snmp", "interfaceName"),
        FN(setsnmpVlanInterfaceNetInterfaces, "snmp", "interfaceName"),
        FN(setsnmpSubInterfaceNetInterfaces, "snmp", "interfaceName"),
        FN(setsnmpBridgeNetInterfaces, "snmp", "interfaceName"),
        FN(setpingPhyInterfaceNetInterfaces, "ping", "interfaceName"),
        FN(setpingVlanInterfaceNetInterfaces, "ping", "interfaceName"),
        FN(setpingSubInterfaceNetInterfaces, "ping", "interfaceName"),
        FN(setpingBridgeNetInterfaces, "ping", "interfaceName"),
        FN(db_if_set_access_enable, "if_info"),
        FN(db_if_set_access_disable, "if_info"),
        FN(db_if_set_dhcpmode, "if_info"),
        FN(db_if_negmode_update, "if_info"),
        FN(db_if_stat_update, "if_info"),
        FN(db_if_mtu_update, "if_info"),
        FN(db_if_mac_update, "if_info"),
        FN(db_if_refresh, "if_info"),
        FN(bindVlanTypeInterfaceNetInterfaces, "interfaceName", "vlanType"),
        FN(setVlanNameInterfaceNetInterfaces, "interfaceName", "vlanEthInterfaceName"),
        FN(get_interface_connnection_status, "interfaceName"),
        // Zones, zone look-ups, address pools, assets
        FN(insertSecurityAreas, "name"),
        FN(deleteSecurityAreas, "name"),
        FN(updateSecurityAreas, "name", "enable"),
        FN(insertMainFrame, "name", "interfaceName"),
        FN(deleteMainFrame, "name"),
        FN(select_name_by_interfacename_SA, "interfaceName", "ret_str!"),
        FN(selectInterfaceInfoByNameSA, "name", "ret_val!", "ret_len"),
        FN(selectIpaddressInfoByNameSA, "name", "ret_str!", "ret_len"),
        FN(util_db_query_commonSecurityAreas),
        FN(util_db_query_commonSecurityAreaInterfaces),
        FN(deleteAddressPoolsTableByName, "name"),
        FN(insertAddressPoolsTable, "name", "interfaceName", "ipAddress", "type", "enable"),
        FN(addAddressPoolsNameTable, "name"),
        FN(updateAddressPoolsTableEnable, "name", "enable"),
        FN(updateAddressPoolsTableInterface, "name", "interfaceName"),
        FN(updateAddressPoolsTableIp, "name", "ipAddress"),
        FN(util_db_query_commonAddressPools),
        FN(select_interface_by_name_AddPools, "name", "ret_str!"),
        FN(select_ipAddress_by_name_ipAdd, "name", "ret_str!"),
        FN(get_address_type_by_name, "name"),
        FN(selectSAnameByAssetname, "name", "ret_str!"),
        FN(selectipAddressByAssetname, "name", "ret_str!"),
        FN(deleteAssetByName, "name"),
        // Services, routes, policies
        FN(checkServersByName, "name"),
        FN(insertServersName, "name", "description"),
        FN(updateServersName, "name", "description"),
        FN(deleteServersByName, "name"),
        FN(setServerRules, "name", "type", "maxsrcport", "minsrcport", "maxdstport", "mindstport"),
        FN(deleteServerRules, "name"),
        FN(setICMPServerRules, "name", "type"),
        FN(util_db_query_commonServers),
        FN(util_db_query_commonServerRules),
        FN(db_get_srv_info_by_name, "name"),
        FN(getRouteDatasgateInfoByIdx, "route_info"),
        FN(insertRouteDatasgateInfo, "destIpMask", "gateWayNextJump", "outInterfaceName", "distance", "priority"),
        FN(updateRouteDatasgateInfo, "destIpMask", "gateWayNextJump", "outInterfaceName", "priority", "manageScope",
           "routeId"),
        FN(deleteRouteDatasgateInfo, "destIpMask", "gateWayNextJump", "outInterfaceName"),
        FN(deleteRouteDatasAllInfo),
        FN(getPolicyIdByName, "name"),
        FN(deletePolicyByName, "name"),
        FN(getPolicyNumBySerAPPType),
        // Applications and inspection
        FN(db_add_app, "info"),
        FN(db_del_app_by_name, "name"),
        FN(db_update_app_by_name, "info"),
        FN(db_get_app_info_by_name, "name"),
        FN(db_add_trait, "info"),
        FN(db_del_trait_by_appid, "appid"),
        FN(db_update_traitby_appid, "info"),
        FN(db_get_trait_info_by_appid, "appid"),
        FN(set_arpspoof_status, "type", "status"),
        FN(get_arpspoof_status, "type"),
        FN(set_ipmac_asset_status, "ip", "mac", "assetId", "type", "action"),
        FN(get_ipmac_asset_info, "type", "asset_information"),
        FN(get_interfaces_by_devinfo, "ip", "mac", "ifnames"),
        FN(set_ipmac_asset_info, "ip", "mac", "assetId", "type", "status", "value"),
        FN(clear_asset_info, "ip", "mac", "assetId"),
        FN(get_mac_by_ip, "ip", "mac!"),
        FN(insertSessionControls, "frequencyUpperLimit", "totalUpperLimit", "sourceIp", "targetIp", "sessionType",
           "serviceApp", "enableLog", "enableUpperLimitWarn"),
        FN(updateSessionControls, "sessionControlId", "frequencyUpperLimit", "totalUpperLimit", "enableLog",
           "enableUpperLimitWarn"),
        FN(deleteSessionControls, "sessionControlId"),
        FN(insertPolicyToDpiWhitelist, "signame", "whitelist", "sid"),
        FN(deletePolicyToDpiWhitelistSid, "sid"),
        FN(deletePolicyToDpiWhitelistAll),
        FN(selectPolicyToDpiWhitelistById, "id"),
        FN(selectPolicyToDpiWhitelistBySid, "sid"),
        FN(getPolicyToDpiWhitelistPolicyNum, "whitelist"),
        FN(get_defend_switch_status, "attackType"),
        FN(set_defend_switch_status, "attackType", "status"),
        FN(set_defend_switch_by_nameId, "attackNameId", "status", "threshold"),
        FN(get_defend_attack_rules, "attackType", "rules"),
        // Device settings
        FN(setWorkModeBasicSettings, "w_modeType"),
        FN(autoswitchWorkModeBasicSettingsOff, "w_enableSwitch"),
        FN(autoswitchWorkModeBasicSettingsOn, "w_switchTime", "w_switchModeType"),
        FN(insertWorkModeBasicSettings, "basicSettingType"),
        FN(timesettingBasicSettingsOff, "t_systemTime"),
        FN(activateNtpBasicSettings, "t_activateNtp", "t_ntpIp"),
        FN(setSyslogTurnBasicSettings, "l_syslogStorageType"),
        FN(insertSyslogServerBasicSettings, "syslogIp", "sysProt", "syslogPort"),
        FN(deleteSyslogServerBasicSettings, "syslogIp", "sysProt", "syslogPort"),
        FN(updateBypassPowerOn, "bypassName", "powerOn"),
        FN(updateBypassFaultOn, "bypassName", "faultOn"),
        FN(setRemoteServiceStrategyRuleName, "strategyRuleName", "ruleData"),
        FN(setOnRemoteServiceportStrageMangement, "strategyRuleName"),
        FN(setOffRemoteServiceportStrageMangement, "strategyRuleName"),
    };
    return table;
}

}  // namespace cli
