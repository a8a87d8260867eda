/*
 * util-db-NetInterfaces.h - network interfaces of the appliance (table
 * NetInterfaces): interface kinds and their dispatch by name, addresses,
 * bridge member lists, per-interface attributes and management access.
 *
 * Conventions:
 *  1. Results are int: 0 for success and -1 for failure, unless a function
 *     says otherwise (counts, the 1/0/-1 of the bridge membership query, the
 *     stored link status).
 *  2. A record-taking function names the interface by its "effective name":
 *     pname when it is not NULL, else the inline name (at most 20 characters
 *     are read from it). A record with pname NULL and an empty name is refused
 *     with -1.
 *  3. The record and every text it points to stay the caller's: the library
 *     only reads them and writes nothing but `type` (kind dispatchers) and
 *     `ifname_get` (get_Bridge_info_iface). The library keeps nothing between
 *     calls and hands out no heap memory.
 *  4. String values go into the statements verbatim between single quotes,
 *     without escaping: pass clean names. An over-long statement is cut
 *     silently (1024 bytes; the bridge list statements 1152 bytes).
 *  5. A bridge's members are stored on the bridge's row as one text, the names
 *     joined by ';' in the order they were added. Names are matched as plain
 *     substrings: "eth1" is found inside "eth10".
 *  6. Cases the stored data leaves open are settled as follows:
 *     - removing a member that is not in the list, or from a bridge whose list
 *       is absent (NULL), sends no write, leaves the stored list unchanged and
 *       returns 0 (there is nothing to remove);
 *     - appending a member when the list, ';' and the new name would not fit
 *       the 1024-character list (1023 characters and the terminator) sends no
 *       write and returns -1: a cut list is never stored;
 *     - get_interface_connnection_status on an interface whose status is
 *       absent (NULL) returns -1, so an unknown state never reads as a stored
 *       link state.
 */
#ifndef UTIL_DB_NETINTERFACES_H
#define UTIL_DB_NETINTERFACES_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Interface kinds, the values of _db_if_info.type. */
typedef enum {
    DB_IF_NULL = 0,   /* unknown: derived from the name */
    DB_IF_PHY = 1,    /* physical port ("ETH") */
    DB_IF_VLAN = 2,   /* VLAN interface ("VLAN") */
    DB_IF_SUB = 3,    /* sub-interface, an alias address on a port ("SUB") */
    DB_IF_BRIDGE = 4, /* bridge ("BRI") */
    DB_IF_MAX = 5     /* bound, never a kind */
} db_if_type_t;

/* One interface as the caller describes it. */
struct _db_if_info {
    int32_t type;              /* kind (db_if_type_t); see the dispatchers */
    char name[20];             /* inline name, used when pname is NULL */
    char* pname;               /* the caller's name; wins over name */
    char* mac;                 /* MAC address (db_if_mac_update) */
    int32_t dhcp_mode;         /* address mode, stored as ipType */
    char* ipmask;              /* address and mask, one text */
    int32_t status;            /* link status (db_if_stat_update) */
    int32_t confer;            /* auto-negotiation (db_if_negmode_update) */
    int32_t speed;             /* link speed; 0 leaves the stored one */
    char* duplex;              /* not read by the library */
    int32_t mtu;               /* MTU (db_if_mtu_update) */
    int32_t vlanId;            /* VLAN number of a VLAN insert */
    int32_t vlanType;          /* not read by the library */
    int32_t subIndex;          /* index of a sub-interface insert */
    char* pifname;             /* related interface: parent port of a
                                  sub-interface, member in bridge calls */
    char ifname_get[1024];     /* out: member list of get_Bridge_info_iface */
    char* access_ctrl;         /* service column to switch: "https", "snmp",
                                  "ping" (not checked against a list) */
};
typedef struct _db_if_info _db_if_info;

/* A zero-initialised record for the caller's use; the library never touches it. */
UTIL_DB_API extern struct _db_if_info db_if_info;

/* ---- Interface records and kind dispatch ---- */

/*
 * Kinds derived from the name. Insert and delete, only when type is
 * DB_IF_NULL: ':' -> SUB, else '.' -> VLAN, else "eth" or "agl0" anywhere ->
 * PHY, else BRIDGE. db_if_set_ip, always: "eth" or "agl0" -> PHY, else ':' ->
 * SUB, else '.' -> VLAN, else BRIDGE. So "eth1.100" is a VLAN for insert and
 * delete and a physical port for db_if_set_ip. The derived kind is written to
 * if_info->type.
 */

/* Inserts the interface's row by kind: PHY (name, "ETH"), VLAN (name, "VLAN",
 * vlanId), SUB (name, "SUB", subIndex, ipmask, pifname as parent port) or
 * BRIDGE (name, "BRI"). -1 for a type above 4 or below 0. */
UTIL_DB_API int db_if_insert(db_handle_t* connection, struct _db_if_info* if_info);
/* Deletes the interface's row by kind; a physical port returns 0 and is kept.
 * -1 for a type above 4 or below 0. */
UTIL_DB_API int db_if_delete(db_handle_t* connection, struct _db_if_info* if_info);
/* Stores ipmask as the interface's address. -1 when ipmask is NULL. */
UTIL_DB_API int db_if_set_ip(db_handle_t* connection, struct _db_if_info* if_info);
/* Clears the interface's address (the empty text). */
UTIL_DB_API int db_if_unset_ip(db_handle_t* connection, struct _db_if_info* if_info);
/* Whether the interface has the address ipmask: the matching row count (0 or
 * 1); 0 also when the look-up cannot run; -1 for bad arguments or a count
 * above 1. */
UTIL_DB_API int db_if_check_ipmask(db_handle_t* connection, struct _db_if_info* if_info);
/* Deletes every interface that is not a physical port ("ETH"). */
UTIL_DB_API int db_if_delete_all(db_handle_t* connection);
/* The number of rows bearing the effective name (0: no such interface); 0
 * also when the look-up cannot run; -1 for a NULL record or no name. */
UTIL_DB_API int db_check_if_by_name(db_handle_t* connection, struct _db_if_info* if_info);
/* Renames EVERY row of the table to interfaceName (the work-mode switch). */
UTIL_DB_API int changeModePhyNetInterfaces(db_handle_t* connection, const char* interfaceName);

/* ---- Bridge membership ---- */

/* Appends if_info->pifname to the member list of the bridge named by the
 * record. No duplicate check; an empty stored list gives ";member". */
UTIL_DB_API int db_br_addif(db_handle_t* connection, struct _db_if_info* if_info);
/* Removes if_info->pifname (its first substring match) from the bridge's
 * member list. Removing the first member keeps a leading ';'. */
UTIL_DB_API int db_br_delif(db_handle_t* connection, struct _db_if_info* if_info);
/* 1 when the bridge's member list contains if_info->pifname: the list is
 * copied into if_info->ifname_get (at most 1024 characters, not terminated
 * when it fills them all). 0 when it does not (ifname_get untouched) or the
 * look-up cannot run; -1 for bad arguments or no such bridge. */
UTIL_DB_API int get_Bridge_info_iface(db_handle_t* connection, struct _db_if_info* if_info);
/* Stores the bridge's state. */
UTIL_DB_API int updateBridgeModeNetInterfaces(db_handle_t* connection, const char* interfaceName, int status);

/* ---- Management access services ----
 * Each stores its value (1 on, 0 off) in the service's column of the named
 * interface. The four of a service send the same statement; callers pick the
 * one matching the interface's kind. -1 for a NULL handle or name. */

UTIL_DB_API int sethttpsPhyInterfaceNetInterfaces(db_handle_t* connection, int https, const char* interfaceName);
UTIL_DB_API int sethttpsVlanInterfaceNetInterfaces(db_handle_t* connection, int https, const char* interfaceName);
UTIL_DB_API int sethttpsSubInterfaceNetInterfaces(db_handle_t* connection, int https, const char* interfaceName);
UTIL_DB_API int sethttpsBridgeNetInterfaces(db_handle_t* connection, int https, const char* interfaceName);
UTIL_DB_API int setsnmpPhyInterfaceNetInterfaces(db_handle_t* connection, int snmp, const char* interfaceName);
UTIL_DB_API int setsnmpVlanInterfaceNetInterfaces(db_handle_t* connection, int snmp, const char* interfaceName);
UTIL_DB_API int setsnmpSubInterfaceNetInterfaces(db_handle_t* connection, int snmp, const char* interfaceName);
UTIL_DB_API int setsnmpBridgeNetInterfaces(db_handle_t* connection, int snmp, const char* interfaceName);
UTIL_DB_API int setpingPhyInterfaceNetInterfaces(db_handle_t* connection, int ping, const char* interfaceName);
UTIL_DB_API int setpingVlanInterfaceNetInterfaces(db_handle_t* connection, int ping, const char* interfaceName);
UTIL_DB_API int setpingSubInterfaceNetInterfaces(db_handle_t* connection, int ping, const char* interfaceName);
UTIL_DB_API int setpingBridgeNetInterfaces(db_handle_t* connection, int ping, const char* interfaceName);

/* ---- Interface attributes ----
 * The record entry points refuse a NULL handle or record and a record without
 * a name with -1, and serve every kind (type is not read). */

/* Switches the service column named by if_info->access_ctrl on (1) / off (0).
 * -1 when access_ctrl is NULL. */
UTIL_DB_API int db_if_set_access_enable(db_handle_t* connection, struct _db_if_info* if_info);
UTIL_DB_API int db_if_set_access_disable(db_handle_t* connection, struct _db_if_info* if_info);
/* Stores dhcp_mode as the address mode (ipType). */
UTIL_DB_API int db_if_set_dhcpmode(db_handle_t* connection, struct _db_if_info* if_info);
/* Stores confer, then speed unless it is 0 (not sent when confer fails). */
UTIL_DB_API int db_if_negmode_update(db_handle_t* connection, struct _db_if_info* if_info);
/* With ipmask set: stores it as the address (status is not written).
 * Otherwise stores status on every interface whose name CONTAINS the name
 * ("eth1" also sets "eth10" and "eth1.100"). */
UTIL_DB_API int db_if_stat_update(db_handle_t* connection, struct _db_if_info* if_info);
/* Stores mtu. */
UTIL_DB_API int db_if_mtu_update(db_handle_t* connection, struct _db_if_info* if_info);
/* Stores mac. -1 when mac is NULL. */
UTIL_DB_API int db_if_mac_update(db_handle_t* connection, struct _db_if_info* if_info);
/* db_if_stat_update, reduced to 0 / -1. */
UTIL_DB_API int db_if_refresh(db_handle_t* connection, struct _db_if_info* if_info);

/* Stores the VLAN binding type (text) of a VLAN interface. -1 for NULL arguments. */
UTIL_DB_API int bindVlanTypeInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                                   const char* vlanType);
/* Stores the port a VLAN interface rides on. -1 for NULL arguments. */
UTIL_DB_API int setVlanNameInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                                  const char* vlanEthInterfaceName);
/* The stored link status as an integer (leading digits; other text gives 0);
 * -1 for NULL arguments, no such interface or an absent status. */
UTIL_DB_API int get_interface_connnection_status(db_handle_t* connection, const char* interfaceName);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_NETINTERFACES_H */
