/*
 * util-db-NetInterfaces.cpp - the NetInterfaces table: interface rows by kind,
 * addresses, bridge member lists, per-interface attributes and management
 * access services.
 */
#include "util-db-accessor.h"

#include <stdlib.h>

#include "util-db-NetInterfaces-internal.h"
#include "util-db-NetInterfaces.h"

using util_db::Appender;
using util_db::Result;
using util_db::kRowMessages;
using util_db::run_format;
using util_db::text_or_null;

struct _db_if_info db_if_info = {};

namespace {

/* Bridge member lists: the list itself and the statements that carry it. */
constexpr size_t kMemberListSize = 1024;
using ListStatement = util_db::BasicStatement<1152>;


/*
 * The name a record stands for: pname when present, else the inline name (at
 * most its 20 characters, even when the caller left no terminator in it).
 * get() is NULL for no record, or for no pname and an empty inline name.
 */
class EffectiveName {
public:
    explicit EffectiveName(const struct _db_if_info* info) : name_(NULL) {
        inline_[0] = '\0';
        if (info == NULL) {
            return;
        }
        if (info->pname != NULL) {
            name_ = info->pname;
            return;
        }
        memcpy(inline_, info->name, sizeof info->name);
        inline_[sizeof info->name] = '\0';
        if (inline_[0] != '\0') {
            name_ = inline_;
        }
    }
    EffectiveName(const EffectiveName&) = delete;
    EffectiveName& operator=(const EffectiveName&) = delete;

    const char* get() const { return name_; }

private:
    char inline_[sizeof(_db_if_info::name) + 1];
    const char* name_;
};

/* The kind of an interface from its name, as insert and delete derive it. */
int32_t kind_for_change(const char* name) {
    if (strchr(name, ':') != NULL) {
        return DB_IF_SUB;
    }
    if (strchr(name, '.') != NULL) {
        return DB_IF_VLAN;
    }
    if (strstr(name, "eth") != NULL || strstr(name, "agl0") != NULL) {
        return DB_IF_PHY;
    }
    return DB_IF_BRIDGE;
}

/* The kind of an interface from its name, as the address dispatcher derives it. */
int32_t kind_for_address(const char* name) {
    if (strstr(name, "eth") != NULL || strstr(name, "agl0") != NULL) {
        return DB_IF_PHY;
    }
    if (strchr(name, ':') != NULL) {
        return DB_IF_SUB;
    }
    if (strchr(name, '.') != NULL) {
        return DB_IF_VLAN;
    }
    return DB_IF_BRIDGE;
}

/* The address setters of the physical, VLAN and sub-interface kinds share
 * their statement and their trace. */
int set_ip_mask(db_handle_t* connection, const char* interfaceName, const char* ipAddressMask) {
    UTIL_DB_LOG(7, " Begin");
    if (connection == NULL) {
        return -1;
    }
    if (run_format(connection, "UPDATE NetInterfaces SET ipAddressMask = '%s' WHERE interfaceName = '%s'",
               text_or_null(ipAddressMask), text_or_null(interfaceName)) != 0) {
        return -1;
    }
    UTIL_DB_LOG(7, " End");
    return 0;
}

/* The three kinds that can be deleted share one statement. */
int delete_interface(db_handle_t* connection, const char* interfaceName) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "delete from NetInterfaces where interfaceName = '%s'", interfaceName);
}

/* Writes a bridge's member list. */
int write_member_list(db_handle_t* connection, const char* bridge, const char* list) {
    ListStatement sql(connection);
    sql.format("UPDATE NetInterfaces SET briInterfaceName = '%s' WHERE interfaceName = '%s'", list, bridge);
    return util_db::run(connection, sql);
}

/*
 * The first two steps of a list change: the existence probe (its rows are
 * not looked at) and the list read, formatted like the list write into the
 * larger statement buffer. False when either statement fails;
 * otherwise `res` holds the list read.
 */
bool read_member_list(db_handle_t* connection, const char* bridge, Result& res) {
    ListStatement probe(connection);
    probe.format("SELECT interfaceName from NetInterfaces WHERE interfaceName = '%s'", bridge);
    if (!util_db::store(connection, probe)) {
        return false;
    }
    ListStatement read(connection);
    read.format("SELECT briInterfaceName from NetInterfaces WHERE interfaceName = '%s'", bridge);
    res = util_db::store(connection, read);
    return true;
}

}  // namespace

extern "C" {

/* ---- Rows by kind ---- */

int insertPhyNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "insert into NetInterfaces (interfaceName,interfaceType) VALUES ('%s','%s')",
                  interfaceName, "ETH");
}

int insertVlanInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int vlanIndex) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection,
                  "insert into NetInterfaces (interfaceName, interfaceType, vlanIndex) VALUES ('%s', '%s', %d)",
                  interfaceName, "VLAN", vlanIndex);
}

int insertSubInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int subIndex,
                                    const char* ipAddressMask, const char* phyInterfaceName) {
    if (connection == NULL || ipAddressMask == NULL || phyInterfaceName == NULL) {
        return -1;
    }
    return run_format(connection,
                  "insert into NetInterfaces (interfaceName, interfaceType, subIndex, ipAddressMask, "
                  "subEthInterfaceName) VALUES ('%s', '%s', %d, '%s', '%s')",
                  text_or_null(interfaceName), "SUB", subIndex, ipAddressMask, phyInterfaceName);
}

int insertBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    UTIL_DB_LOG(7, " Begin");
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    if (run_format(connection, "insert into NetInterfaces (interfaceName, interfaceType) VALUES ('%s', '%s')",
               interfaceName, "BRI") != 0) {
        return -1;
    }
    UTIL_DB_LOG(7, " End");
    return 0;
}

int deleteVlanInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    return delete_interface(connection, interfaceName);
}

int deleteSubInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    return delete_interface(connection, interfaceName);
}

int deleteBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    return delete_interface(connection, interfaceName);
}

/* ---- Addresses ---- */

int setIpMaskPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                       const char* ipAddressMask) {
    return set_ip_mask(connection, interfaceName, ipAddressMask);
}

int setIpMaskVlanInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                        const char* ipAddressMask) {
    return set_ip_mask(connection, interfaceName, ipAddressMask);
}

int setIpMaskSubInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                       const char* ipAddressMask) {
    return set_ip_mask(connection, interfaceName, ipAddressMask);
}

int setIpMaskBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* ipAddressMask) {
    UTIL_DB_LOG(7, " Begin");
    if (connection == NULL || interfaceName == NULL || ipAddressMask == NULL) {
        return -1;
    }
    if (run_format(connection, "update NetInterfaces set ipAddressMask = '%s' WHERE interfaceName = '%s'",
               ipAddressMask, interfaceName) != 0) {
        return -1;
    }
    UTIL_DB_LOG(7, " End");
    return 0;
}

int unsetIpMaskNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    if (connection == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET ipAddressMask = '' WHERE interfaceName = '%s'",
                  text_or_null(interfaceName));
}

int checkIpmaskNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* ipAddressMask) {
    if (connection == NULL || interfaceName == NULL || ipAddressMask == NULL) {
        return -1;
    }
    util_db::Statement sql(connection);
    sql.format("SELECT ipAddressMask from NetInterfaces WHERE interfaceName = '%s' and ipAddressMask '%s'",
               interfaceName, ipAddressMask);
    Result res = util_db::store(connection, sql);
    if (!res) {
        return 0;  // the statement cannot run: no match
    }
    const int rows = res.rows_int();
    if (rows == 0 || rows == 1) {
        return rows;
    }
    util_db::log_error(kRowMessages.empty);
    return -1;
}

/* ---- Dispatchers ---- */

int db_if_insert(db_handle_t* connection, struct _db_if_info* if_info) {
    UTIL_DB_LOG(7, " Begin");
    EffectiveName name(if_info);
    if (connection == NULL || if_info == NULL || name.get() == NULL || if_info->type > DB_IF_BRIDGE) {
        return -1;
    }
    if (if_info->type == DB_IF_NULL) {
        if_info->type = kind_for_change(name.get());
    }
    int ret = -1;
    switch (if_info->type) {
        case DB_IF_PHY:
            ret = insertPhyNetInterfaces(connection, name.get());
            break;
        case DB_IF_VLAN:
            ret = insertVlanInterfaceNetInterfaces(connection, name.get(), if_info->vlanId);
            break;
        case DB_IF_SUB:
            ret = insertSubInterfaceNetInterfaces(connection, name.get(), if_info->subIndex, if_info->ipmask,
                                                  if_info->pifname);
            break;
        case DB_IF_BRIDGE:
            ret = insertBridgeNetInterfaces(connection, name.get());
            break;
        default:
            break;
    }
    UTIL_DB_LOG(7, " End");
    return ret;
}

int db_if_delete(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || if_info == NULL || name.get() == NULL || if_info->type > DB_IF_BRIDGE) {
        return -1;
    }
    if (if_info->type == DB_IF_NULL) {
        if_info->type = kind_for_change(name.get());
    }
    switch (if_info->type) {
        case DB_IF_PHY:
            return 0;  // physical ports are never deleted one by one
        case DB_IF_VLAN:
            return deleteVlanInterfaceNetInterfaces(connection, name.get());
        case DB_IF_SUB:
            return deleteSubInterfaceNetInterfaces(connection, name.get());
        case DB_IF_BRIDGE:
            return deleteBridgeNetInterfaces(connection, name.get());
        default:
            return -1;
    }
}

int db_if_set_ip(db_handle_t* connection, struct _db_if_info* if_info) {
    UTIL_DB_LOG(7, " Begin");
    EffectiveName name(if_info);
    if (connection == NULL || if_info == NULL || name.get() == NULL || if_info->ipmask == NULL) {
        UTIL_DB_LOG(7, "Ivalid param,ret:[%d]\n", -1);
        return -1;
    }
    if_info->type = kind_for_address(name.get());
    int ret = -1;
    switch (if_info->type) {
        case DB_IF_PHY:
            ret = setIpMaskPhyInterfaceNetInterfaces(connection, name.get(), if_info->ipmask);
            break;
        case DB_IF_VLAN:
            ret = setIpMaskVlanInterfaceNetInterfaces(connection, name.get(), if_info->ipmask);
            break;
        case DB_IF_SUB:
            ret = setIpMaskSubInterfaceNetInterfaces(connection, name.get(), if_info->ipmask);
            break;
        default:
            ret = setIpMaskBridgeNetInterfaces(connection, name.get(), if_info->ipmask);
            break;
    }
    UTIL_DB_LOG(7, " End");
    return ret;
}

int db_if_unset_ip(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL) {
        return -1;
    }
    return unsetIpMaskNetInterfaces(connection, name.get());
}

int db_if_check_ipmask(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL || if_info->ipmask == NULL) {
        return -1;
    }
    return checkIpmaskNetInterfaces(connection, name.get(), if_info->ipmask);
}

int db_if_delete_all(db_handle_t* connection) {
    if (connection == NULL) {
        return -1;
    }
    return util_db::run(connection, "delete from NetInterfaces where interfaceType != 'ETH';");
}

int db_check_if_by_name(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (name.get() == NULL) {  // no record, or a record without a name
        UTIL_DB_LOG(3, "%s", "Ivalid param\n");
        return -1;
    }
    util_db::Statement sql(connection);
    sql.format("SELECT interfaceName from NetInterfaces where interfaceName = '%s'", name.get());
    Result res = util_db::store(connection, sql);
    if (!res) {
        return 0;
    }
    const int rows = res.rows_int();
    if (rows < 0) {
        util_db::log_error(kRowMessages.empty);
        return -1;
    }
    res.reset();
    UTIL_DB_LOG(7, "db_check_if_by_name() return: %d", rows);
    return rows;
}

int changeModePhyNetInterfaces(db_handle_t* connection, const char* interfaceName) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET interfaceName = '%s'", interfaceName);
}

/* ---- Bridge membership ---- */

int addInterfaceBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                    const char* briInterfaceName) {
    if (connection == NULL || interfaceName == NULL || briInterfaceName == NULL) {
        return -1;
    }
    char list[kMemberListSize];
    memset(list, 0, sizeof list);
    Result res;
    if (!read_member_list(connection, interfaceName, res)) {
        return -1;
    }
    // The new list: the member alone, the empty list (no row), or the stored
    // list, ';' and the member.
    bool alone = !res;
    const char* stored = NULL;
    if (res) {
        const int rows = res.rows_int();
        if (rows < 0) {
            util_db::log_error(kRowMessages.empty);
            return -1;
        }
        if (rows > 0) {
            MYSQL_ROW row = res.fetch();
            if (row == NULL) {
                util_db::log_error(kRowMessages.fetch);
                return -1;
            }
            stored = row[0];
            alone = stored == NULL;
        }
    }
    const size_t member = strlen(briInterfaceName);
    if (alone) {
        if (member >= sizeof list) {
            return -1;  // a cut list is never stored
        }
        memcpy(list, briInterfaceName, member);
    } else if (stored != NULL) {
        const size_t length = strlen(stored);
        if (length + 1 + member >= sizeof list) {
            return -1;  // a cut list is never stored
        }
        memcpy(list, stored, length);
        list[length] = ';';
        memcpy(list + length + 1, briInterfaceName, member);
    }
    res.reset();
    return write_member_list(connection, interfaceName, list);
}

int deleteInterfaceBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                       const char* briInterfaceName) {
    if (connection == NULL || interfaceName == NULL || briInterfaceName == NULL) {
        return -1;
    }
    char list[kMemberListSize];
    memset(list, 0, sizeof list);
    Result res;
    if (!read_member_list(connection, interfaceName, res) || !res) {
        return -1;
    }
    const int rows = res.rows_int();
    if (rows < 0) {
        util_db::log_error(kRowMessages.empty);
        return -1;
    }
    if (rows > 0) {
        MYSQL_ROW row = res.fetch();
        if (row == NULL) {
            util_db::log_error(kRowMessages.fetch);
            return -1;
        }
        const char* stored = row[0];
        const char* found = stored != NULL ? strstr(stored, briInterfaceName) : NULL;
        if (found == NULL) {
            return 0;  // not a member: the stored list stays as it is
        }
        if (found != stored) {
            // Keep what precedes the separator in front of the member.
            const size_t before = static_cast<size_t>(found - stored);
            snprintf(list, before < sizeof list ? before : sizeof list, "%s", stored);
        }
        const char* rest = strchr(found, ';');
        if (rest != NULL) {
            Appender(list, sizeof list, strlen(list)).append("%s", rest);
        }
    }
    res.reset();
    return write_member_list(connection, interfaceName, list);
}

int db_br_addif(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL || if_info->pifname == NULL) {
        return -1;
    }
    return addInterfaceBridgeNetInterfaces(connection, name.get(), if_info->pifname);
}

int db_br_delif(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL || if_info->pifname == NULL) {
        return -1;
    }
    return deleteInterfaceBridgeNetInterfaces(connection, name.get(), if_info->pifname);
}

int get_Bridge_info_iface(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (name.get() == NULL) {
        return -1;
    }
    util_db::Statement sql(connection);
    sql.format("SELECT interfaceName,briInterfaceName from NetInterfaces WHERE interfaceName = '%s'", name.get());
    Result res = util_db::store(connection, sql);
    if (!res) {
        return 0;
    }
    const int rows = res.rows_int();
    if (rows < 0 || rows > 1) {
        util_db::log_error(kRowMessages.empty);
        return -1;
    }
    MYSQL_ROW row = res.fetch();
    if (row == NULL) {
        util_db::log_error(kRowMessages.fetch);
        return -1;
    }
    // An absent member name is found in no list.
    if (row[0] == NULL || row[1] == NULL || if_info->pifname == NULL || strstr(row[1], if_info->pifname) == NULL) {
        return 0;
    }
    util_db::copy_bounded(if_info->ifname_get, row[1], sizeof if_info->ifname_get);
    return 1;
}

int updateBridgeModeNetInterfaces(db_handle_t* connection, const char* interfaceName, int status) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET status = %d WHERE interfaceName = '%s'", status,
                  interfaceName);
}

/* ---- Management access services ---- */

/* The four setters of one service: one per interface kind, one statement. */
#define NETIF_ACCESS_SETTER(service, kind, statement)                                                  \
    int set##service##kind##NetInterfaces(db_handle_t* connection, int service, const char* interfaceName) { \
        if (connection == NULL || interfaceName == NULL) {                                             \
            return -1;                                                                                 \
        }                                                                                              \
        return run_format(connection, statement, service, interfaceName);                                 \
    }
#define NETIF_ACCESS_SERVICE(service, statement)               \
    NETIF_ACCESS_SETTER(service, PhyInterface, statement)      \
    NETIF_ACCESS_SETTER(service, VlanInterface, statement)     \
    NETIF_ACCESS_SETTER(service, SubInterface, statement)      \
    NETIF_ACCESS_SETTER(service, Bridge, statement)

NETIF_ACCESS_SERVICE(https, "UPDATE NetInterfaces SET https = %d WHERE interfaceName = '%s'")
NETIF_ACCESS_SERVICE(snmp, "UPDATE NetInterfaces SET snmp = %d WHERE interfaceName = '%s'")
NETIF_ACCESS_SERVICE(ping, "UPDATE NetInterfaces SET ping = %d WHERE interfaceName = '%s'")

#undef NETIF_ACCESS_SERVICE
#undef NETIF_ACCESS_SETTER

/* ---- Column setters ---- */

int setAccessModeNetInterfaces(db_handle_t* connection, const char* service, int mode, const char* interfaceName) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    util_db::Statement sql(connection);
    sql.format("UPDATE NetInterfaces SET %s = %d WHERE interfaceName = '%s'", text_or_null(service), mode, interfaceName);
    sql.identifier(text_or_null(service));
    return util_db::run(connection, sql);
}

int setDhcpModeNetInterfaces(db_handle_t* connection, const char* interfaceName, int ipType) {
    if (connection == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET ipType = %d WHERE interfaceName = '%s'", ipType,
                  text_or_null(interfaceName));
}

int setAutonegPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int confer) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET confer = %d WHERE interfaceName = '%s'", confer,
                  interfaceName);
}

int setSpeedPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int speed) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET speed = %d WHERE interfaceName = '%s'", speed,
                  interfaceName);
}

int setMtuPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int mtu) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET mtu = %d WHERE interfaceName = '%s'", mtu, interfaceName);
}

int setMacInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* mac) {
    return run_format(connection, "UPDATE NetInterfaces SET mac = '%s' WHERE interfaceName = '%s'", text_or_null(mac),
                  text_or_null(interfaceName));
}

int setLinkStatusNetInterfaces(db_handle_t* connection, const char* interfaceName, int status) {
    return run_format(connection, "UPDATE NetInterfaces SET status = %d WHERE interfaceName like '%%%s%%'", status,
                  text_or_null(interfaceName));
}

int bindVlanTypeInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* vlanType) {
    if (connection == NULL || interfaceName == NULL || vlanType == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET vlanType = '%s' WHERE interfaceName = '%s'", vlanType,
                  interfaceName);
}

int setVlanNameInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                      const char* vlanEthInterfaceName) {
    if (connection == NULL || interfaceName == NULL || vlanEthInterfaceName == NULL) {
        return -1;
    }
    return run_format(connection, "UPDATE NetInterfaces SET vlanEthInterfaceName  = '%s' WHERE interfaceName = '%s'",
                  vlanEthInterfaceName, interfaceName);
}

/* ---- Record entry points ---- */

int db_if_set_access_enable(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL || if_info->access_ctrl == NULL) {
        return -1;
    }
    return setAccessModeNetInterfaces(connection, if_info->access_ctrl, 1, name.get());
}

int db_if_set_access_disable(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL || if_info->access_ctrl == NULL) {
        return -1;
    }
    return setAccessModeNetInterfaces(connection, if_info->access_ctrl, 0, name.get());
}

int db_if_set_dhcpmode(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL) {
        return -1;
    }
    return setDhcpModeNetInterfaces(connection, name.get(), if_info->dhcp_mode);
}

int db_if_negmode_update(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL) {
        return -1;
    }
    const int ret = setAutonegPhyInterfaceNetInterfaces(connection, name.get(), if_info->confer);
    if (ret < 0) {
        return -1;
    }
    if (if_info->speed == 0) {
        return ret;  // the stored speed stays
    }
    const int speed = setSpeedPhyInterfaceNetInterfaces(connection, name.get(), if_info->speed);
    return speed < 0 ? -1 : speed;
}

int db_if_stat_update(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL) {
        return -1;
    }
    if (if_info->ipmask != NULL) {
        return setIpMaskPhyInterfaceNetInterfaces(connection, name.get(), if_info->ipmask);
    }
    return setLinkStatusNetInterfaces(connection, name.get(), if_info->status);
}

int db_if_mtu_update(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL) {
        return -1;
    }
    return setMtuPhyInterfaceNetInterfaces(connection, name.get(), if_info->mtu);
}

int db_if_mac_update(db_handle_t* connection, struct _db_if_info* if_info) {
    EffectiveName name(if_info);
    if (connection == NULL || name.get() == NULL || if_info->mac == NULL) {
        return -1;
    }
    return setMacInterfaceNetInterfaces(connection, name.get(), if_info->mac);
}

int db_if_refresh(db_handle_t* connection, struct _db_if_info* if_info) {
    return db_if_stat_update(connection, if_info) < 0 ? -1 : 0;
}

int get_interface_connnection_status(db_handle_t* connection, const char* interfaceName) {
    if (connection == NULL || interfaceName == NULL) {
        return -1;
    }
    util_db::Statement sql(connection);
    sql.format("SELECT status from NetInterfaces where interfaceName = '%s'", interfaceName);
    Result res;
    MYSQL_ROW row = util_db::first_row(connection, sql, res, kRowMessages);
    if (row == NULL) {
        return -1;
    }
    UTIL_DB_LOG(7, "The interface connnection status is :%s\t\n", text_or_null(row[0]));
    if (row[0] == NULL) {
        return -1;  // no stored status: unknown, not a link state
    }
    return atoi(row[0]);
}

}  // extern "C"
