// The declarative table of the functions util-db can call: each exported table
// function with the names of its parameters ("name!" marks a caller buffer
// that the function fills). Records are described once, field by field.
#include <stddef.h>

#include "cli.h"

namespace cli {

struct RecordBase {
    static constexpr bool is_array = false;
    static long long capacity(db_handle_t*) { return 0; }
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
    static constexpr bool is_array = true;  // the caller's array, filled without a bound
    // Room for every rule of every type, counted just before the call.
    static long long capacity(db_handle_t* h) { return count_rows(h, "AntiAttacks"); }
    static const char* name() { return "attack_rule_t*"; }
    static const std::vector<Field>& fields() {
        static const std::vector<Field> f = {INT_FIELD(T, attackNameId), INT_FIELD(T, enable), INT_FIELD(T, threshold)};
        return f;
    }
};

#define FN(f, description, ...) entry(#f, &f, description, {__VA_ARGS__})

const std::vector<Entry>& functions() {
    static const std::vector<Entry> table = {
        // Statements
        FN(db_query, "runs one statement whose rows are not read", "cmd"),
        // Network interfaces
        FN(db_if_insert, "adds an interface row by kind (physical, VLAN, sub-interface, bridge)", "if_info"),
        FN(db_if_delete, "deletes an interface row by kind (a physical port is kept)", "if_info"),
        FN(db_if_set_ip, "stores ipmask as the interface address", "if_info"),
        FN(db_if_unset_ip, "clears the interface address", "if_info"),
        FN(db_if_check_ipmask, "whether the interface has address ipmask (row count)", "if_info"),
        FN(db_if_delete_all, "deletes every interface that is not a physical port"),
        FN(db_check_if_by_name, "the number of interfaces bearing the name", "if_info"),
        FN(changeModePhyNetInterfaces, "renames every interface row (work-mode switch)", "interfaceName"),
        FN(db_br_addif, "appends pifname to the bridge member list", "if_info"),
        FN(db_br_delif, "removes pifname from the bridge member list", "if_info"),
        FN(get_Bridge_info_iface, "whether the bridge lists pifname; copies the list into ifname_get", "if_info"),
        FN(updateBridgeModeNetInterfaces, "stores the bridge state", "interfaceName", "status"),
        FN(sethttpsPhyInterfaceNetInterfaces, "switches HTTPS access of a physical port", "https", "interfaceName"),
        FN(sethttpsVlanInterfaceNetInterfaces, "switches HTTPS access of a VLAN interface", "https", "interfaceName"),
        FN(sethttpsSubInterfaceNetInterfaces, "switches HTTPS access of a sub-interface", "https", "interfaceName"),
        FN(sethttpsBridgeNetInterfaces, "switches HTTPS access of a bridge", "https", "interfaceName"),
        FN(setsnmpPhyInterfaceNetInterfaces, "switches SNMP access of a physical port", "snmp", "interfaceName"),
        FN(setsnmpVlanInterfaceNetInterfaces, "switches SNMP access of a VLAN interface", "snmp", "interfaceName"),
        FN(setsnmpSubInterfaceNetInterfaces, "switches SNMP access of a sub-interface", "snmp", "interfaceName"),
        FN(setsnmpBridgeNetInterfaces, "switches SNMP access of a bridge", "snmp", "interfaceName"),
        FN(setpingPhyInterfaceNetInterfaces, "switches ping of a physical port", "ping", "interfaceName"),
        FN(setpingVlanInterfaceNetInterfaces, "switches ping of a VLAN interface", "ping", "interfaceName"),
        FN(setpingSubInterfaceNetInterfaces, "switches ping of a sub-interface", "ping", "interfaceName"),
        FN(setpingBridgeNetInterfaces, "switches ping of a bridge", "ping", "interfaceName"),
        FN(db_if_set_access_enable, "switches the access service named by access_ctrl on", "if_info"),
        FN(db_if_set_access_disable, "switches the access service named by access_ctrl off", "if_info"),
        FN(db_if_set_dhcpmode, "stores dhcp_mode as the address mode", "if_info"),
        FN(db_if_negmode_update, "stores negotiation (confer) and speed", "if_info"),
        FN(db_if_stat_update, "stores ipmask as the address when given", "if_info"),
        FN(db_if_mtu_update, "stores the MTU", "if_info"),
        FN(db_if_mac_update, "stores the MAC address", "if_info"),
        FN(db_if_refresh, "db_if_stat_update with a 0 / -1 result", "if_info"),
        FN(bindVlanTypeInterfaceNetInterfaces, "stores the VLAN binding type", "interfaceName", "vlanType"),
        FN(setVlanNameInterfaceNetInterfaces, "stores the port a VLAN interface rides on", "interfaceName", "vlanEthInterfaceName"),
        FN(get_interface_connnection_status, "the stored link status of an interface", "interfaceName"),
        // Zones, zone look-ups, address pools, assets
        FN(insertSecurityAreas, "creates a zone", "name"),
        FN(deleteSecurityAreas, "deletes a zone and its member interfaces", "name"),
        FN(updateSecurityAreas, "switches a zone on or off", "name", "enable"),
        FN(insertMainFrame, "adds an interface to a zone", "name", "interfaceName"),
        FN(deleteMainFrame, "removes every member interface of a zone", "name"),
        FN(select_name_by_interfacename_SA, "the zone an interface belongs to", "interfaceName", "ret_str!"),
        FN(selectInterfaceInfoByNameSA, "the member interfaces of a zone, comma-joined", "name", "ret_val!", "ret_len<"),
        FN(selectIpaddressInfoByNameSA, "the addresses a zone covers, comma-joined", "name", "ret_str!", "ret_len<"),
        FN(util_db_query_commonSecurityAreas, "logs every zone (debug priority)"),
        FN(util_db_query_commonSecurityAreaInterfaces, "logs every zone member (debug priority)"),
        FN(deleteAddressPoolsTableByName, "deletes every address pool of a name", "name"),
        FN(insertAddressPoolsTable, "adds or overwrites an address pool", "name", "interfaceName", "ipAddress", "type", "enable"),
        FN(addAddressPoolsNameTable, "adds an address pool with only its name", "name"),
        FN(updateAddressPoolsTableEnable, "switches the address pools of a name", "name", "enable"),
        FN(updateAddressPoolsTableInterface, "sets the interface of the address pools of a name", "name", "interfaceName"),
        FN(updateAddressPoolsTableIp, "sets the address of the address pools of a name", "name", "ipAddress"),
        FN(util_db_query_commonAddressPools, "logs every address pool (debug priority)"),
        FN(select_interface_by_name_AddPools, "the interface of an address pool", "name", "ret_str!"),
        FN(select_ipAddress_by_name_ipAdd, "the address of an address pool", "name", "ret_str!"),
        FN(get_address_type_by_name, "the type of an address pool", "name"),
        FN(selectSAnameByAssetname, "the zone of an asset", "name", "ret_str!"),
        FN(selectipAddressByAssetname, "the address of an asset", "name", "ret_str!"),
        FN(deleteAssetByName, "deletes every asset of a name", "name"),
        // Services, routes, policies
        FN(checkServersByName, "counts the services of a name", "name"),
        FN(insertServersName, "adds a service", "name", "description"),
        FN(updateServersName, "sets the description of a service", "name", "description"),
        FN(deleteServersByName, "deletes a service and its rules", "name"),
        FN(setServerRules, "adds a port rule to a service", "name", "type", "maxsrcport", "minsrcport", "maxdstport", "mindstport"),
        FN(deleteServerRules, "deletes every rule of a service", "name"),
        FN(setICMPServerRules, "adds an ICMP rule to a service", "name", "type"),
        FN(util_db_query_commonServers, "logs every service (priority 3)"),
        FN(util_db_query_commonServerRules, "logs every service rule (priority 3)"),
        FN(db_get_srv_info_by_name, "the port rules of a service (predefined first)", "name"),
        FN(getRouteDatasgateInfoByIdx, "reads route routeId into the record", "route_info"),
        FN(insertRouteDatasgateInfo, "adds a static route", "destIpMask", "gateWayNextJump", "outInterfaceName", "distance", "priority"),
        FN(updateRouteDatasgateInfo, "rewrites a static route", "destIpMask", "gateWayNextJump", "outInterfaceName", "priority", "manageScope",
           "routeId"),
        FN(deleteRouteDatasgateInfo, "deletes matching static routes", "destIpMask", "gateWayNextJump", "outInterfaceName"),
        FN(deleteRouteDatasAllInfo, "deletes every static route"),
        FN(getPolicyIdByName, "the id of a control policy", "name"),
        FN(deletePolicyByName, "deletes every control policy of a name", "name"),
        FN(getPolicyNumBySerAPPType, "counts the policies of service/application type 1"),
        // Applications and inspection
        FN(db_add_app, "adds an application", "info"),
        FN(db_del_app_by_name, "deletes the applications of a name", "name"),
        FN(db_update_app_by_name, "updates the application named by pname", "info"),
        FN(db_get_app_info_by_name, "the applications of a name", "name"),
        FN(db_add_trait, "adds a trait to an application", "info"),
        FN(db_del_trait_by_appid, "deletes every trait of an application", "appid"),
        FN(db_update_traitby_appid, "updates every trait of an application", "info"),
        FN(db_get_trait_info_by_appid, "the traits of an application", "appid"),
        FN(set_arpspoof_status, "sets an ARP-spoof subscription status", "type", "status"),
        FN(get_arpspoof_status, "an ARP-spoof subscription status", "type"),
        FN(set_ipmac_asset_status, "sets a property value of the asset with this IP and MAC", "ip", "mac", "assetId", "type", "action"),
        FN(get_ipmac_asset_info, "the addresses of the assets having a property", "type", "asset_information"),
        FN(get_interfaces_by_devinfo, "the zone interfaces of the asset with this IP and MAC", "ip", "mac", "ifnames"),
        FN(set_ipmac_asset_info, "adds a property to an asset", "ip", "mac", "assetId", "type", "status", "value"),
        FN(clear_asset_info, "deletes every property of an asset", "ip", "mac", "assetId"),
        FN(get_mac_by_ip, "the MAC address of the asset with an IP address", "ip", "mac!"),
        FN(insertSessionControls, "adds a session control (or finds it): its id", "frequencyUpperLimit", "totalUpperLimit", "sourceIp", "targetIp", "sessionType",
           "serviceApp", "enableLog", "enableUpperLimitWarn"),
        FN(updateSessionControls, "updates a session control", "sessionControlId", "frequencyUpperLimit", "totalUpperLimit", "enableLog",
           "enableUpperLimitWarn"),
        FN(deleteSessionControls, "deletes a session control", "sessionControlId"),
        FN(insertPolicyToDpiWhitelist, "adds a policy-to-whitelist reference", "signame", "whitelist", "sid"),
        FN(deletePolicyToDpiWhitelistSid, "deletes the whitelist references of a policy", "sid"),
        FN(deletePolicyToDpiWhitelistAll, "deletes every whitelist reference"),
        FN(selectPolicyToDpiWhitelistById, "the whitelist of reference row id", "id"),
        FN(selectPolicyToDpiWhitelistBySid, "the whitelist of a policy", "sid"),
        FN(getPolicyToDpiWhitelistPolicyNum, "counts the references of every whitelist", "whitelist"),
        FN(get_defend_switch_status, "the switch of an attack type", "attackType"),
        FN(set_defend_switch_status, "sets the switch of an attack type", "attackType", "status"),
        FN(set_defend_switch_by_nameId, "sets the enable flag and threshold of a rule", "attackNameId", "status", "threshold"),
        FN(get_defend_attack_rules, "the rules of an attack type", "attackType", "rules"),
        // Device settings
        FN(setWorkModeBasicSettings, "sets the work mode", "w_modeType"),
        FN(autoswitchWorkModeBasicSettingsOff, "stores the work-mode switch flag as given", "w_enableSwitch"),
        FN(autoswitchWorkModeBasicSettingsOn, "switches automatic work-mode switching on", "w_switchTime", "w_switchModeType"),
        FN(insertWorkModeBasicSettings, "adds a settings row of a kind", "basicSettingType"),
        FN(timesettingBasicSettingsOff, "sets the manual system time", "t_systemTime"),
        FN(activateNtpBasicSettings, "switches NTP and sets its server", "t_activateNtp", "t_ntpIp"),
        FN(setSyslogTurnBasicSettings, "sets where syslog output is stored", "l_syslogStorageType"),
        FN(insertSyslogServerBasicSettings, "adds a syslog server (or finds it)", "syslogIp", "sysProt", "syslogPort"),
        FN(deleteSyslogServerBasicSettings, "deletes syslog servers sharing address, protocol or port", "syslogIp", "sysProt", "syslogPort"),
        FN(updateBypassPowerOn, "sets bypass on power-off of a unit", "bypassName", "powerOn"),
        FN(updateBypassFaultOn, "sets bypass on application fault of a unit", "bypassName", "faultOn"),
        FN(setRemoteServiceStrategyRuleName, "replaces the data of a strategy rule and enables it", "strategyRuleName", "ruleData"),
        FN(setOnRemoteServiceportStrageMangement, "enables a strategy rule", "strategyRuleName"),
        FN(setOffRemoteServiceportStrageMangement, "disables a strategy rule", "strategyRuleName"),
    };
    return table;
}

}  // namespace cli
