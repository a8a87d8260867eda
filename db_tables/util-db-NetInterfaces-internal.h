/*
 * util-db-NetInterfaces-internal.h - the statement functions behind the
 * interface dispatchers and record entry points (not exported, not
 * installed). Results are 0 / -1 unless stated; names and values go into the
 * statements verbatim.
 */
#ifndef UTIL_DB_NETINTERFACES_INTERNAL_H
#define UTIL_DB_NETINTERFACES_INTERNAL_H

#include "util-db-NetInterfaces.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Rows by kind. The sub-interface insert does not check its name. */
int insertPhyNetInterfaces(db_handle_t* connection, const char* interfaceName);
int insertVlanInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int vlanIndex);
int insertSubInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int subIndex,
                                    const char* ipAddressMask, const char* phyInterfaceName);
int insertBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName);
int deleteVlanInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName);
int deleteSubInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName);
int deleteBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName);

/* Addresses. The physical, VLAN and sub-interface setters check the handle
 * only; the bridge setter also the name and the mask. */
int setIpMaskPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                       const char* ipAddressMask);
int setIpMaskVlanInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                        const char* ipAddressMask);
int setIpMaskSubInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                       const char* ipAddressMask);
int setIpMaskBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* ipAddressMask);
int unsetIpMaskNetInterfaces(db_handle_t* connection, const char* interfaceName);
/* 0 or 1 matching rows; 0 when the look-up cannot run; -1 otherwise. */
int checkIpmaskNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* ipAddressMask);

/* Bridge member list: interfaceName is the bridge, briInterfaceName the member. */
int addInterfaceBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                    const char* briInterfaceName);
int deleteInterfaceBridgeNetInterfaces(db_handle_t* connection, const char* interfaceName,
                                       const char* briInterfaceName);

/* Column setters. setMac and setLinkStatus check nothing (their entry points
 * do); setLinkStatus matches every name that contains interfaceName. */
int setAccessModeNetInterfaces(db_handle_t* connection, const char* service, int mode, const char* interfaceName);
int setDhcpModeNetInterfaces(db_handle_t* connection, const char* interfaceName, int ipType);
int setAutonegPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int confer);
int setSpeedPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int speed);
int setMtuPhyInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, int mtu);
int setMacInterfaceNetInterfaces(db_handle_t* connection, const char* interfaceName, const char* mac);
int setLinkStatusNetInterfaces(db_handle_t* connection, const char* interfaceName, int status);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_NETINTERFACES_INTERNAL_H */
