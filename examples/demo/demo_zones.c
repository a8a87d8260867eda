/* Zones, address pools and assets: a trusted LAN zone on two ports, an
 * untrusted WAN zone, one address pool per port, and the zone address lists
 * that the policy engine reads back. */
#include <stdio.h>
#include <string.h>

#include "demo.h"

int demo_zones(db_handle_t* h) {
    int failures = 0;
    char list[256];
    char text[64];

    /* Zones and their member ports. */
    failures += demo_check(insertSecurityAreas(h, "trust") == 0, "zone trust created");
    failures += demo_check(insertSecurityAreas(h, "untrust") == 0, "zone untrust created");
    failures += demo_check(insertSecurityAreas(h, "trust") == -1, "a second zone trust is refused");
    failures += demo_check(insertMainFrame(h, "trust", "eth1") == 0 && insertMainFrame(h, "trust", "eth2") == 0 &&
                               insertMainFrame(h, "untrust", "eth0") == 0,
                           "ports eth1, eth2 bound to trust and eth0 to untrust");
    failures += demo_check(updateSecurityAreas(h, "untrust", 1) == 0, "zone untrust enabled");

    /* One pool per port; the WAN pool is replaced by name. */
    failures += demo_check(insertAddressPoolsTable(h, "lan-pool", "eth1", "192.168.10.0/24", 1, 1) == 0 &&
                               insertAddressPoolsTable(h, "office-pool", "eth2", "192.168.20.0/24", 1, 1) == 0 &&
                               insertAddressPoolsTable(h, "wan-pool", "eth0", "203.0.113.8", 0, 1) == 0,
                           "address pools for eth1, eth2 and eth0 added");
    failures += demo_check(insertAddressPoolsTable(h, "wan-pool", "eth0", "203.0.113.9", 0, 1) == 0,
                           "wan-pool replaced with a new address");
    failures += demo_check(addAddressPoolsNameTable(h, "spare") == 0 &&
                               updateAddressPoolsTableInterface(h, "spare", "eth3") == 0 &&
                               updateAddressPoolsTableIp(h, "spare", "10.99.0.1") == 0 &&
                               updateAddressPoolsTableEnable(h, "spare", 0) == 0,
                           "pool spare built column by column, left disabled");

    /* Read back. */
    memset(list, 0, sizeof list);
    const int members = selectInterfaceInfoByNameSA(h, "trust", list, (int)sizeof list);
    failures += demo_check(members == 2 && strcmp(list, "eth1,eth2") == 0, "zone trust has ports eth1,eth2");
    printf("        trust ports (%d): %s\n", members, list);

    memset(text, 0, sizeof text);
    failures += demo_check(select_name_by_interfacename_SA(h, "eth0", text) != NULL && strcmp(text, "untrust") == 0,
                           "eth0 belongs to zone untrust");

    memset(list, 0, sizeof list);
    failures += demo_check(selectIpaddressInfoByNameSA(h, "trust", list, (int)sizeof list) != NULL &&
                               strcmp(list, "192.168.10.0/24,192.168.20.0/24") == 0,
                           "zone trust covers both LAN pools");
    printf("        trust addresses: %s\n", list);
    memset(list, 0, sizeof list);
    failures += demo_check(selectIpaddressInfoByNameSA(h, "untrust", list, (int)sizeof list) != NULL &&
                               strcmp(list, "203.0.113.9") == 0,
                           "zone untrust covers the replaced WAN address");
    printf("        untrust addresses: %s\n", list);

    memset(text, 0, sizeof text);
    failures += demo_check(select_ipAddress_by_name_ipAdd(h, "wan-pool", text) != NULL &&
                               strcmp(text, "203.0.113.9") == 0 && get_address_type_by_name(h, "wan-pool") == 0,
                           "wan-pool reads back 203.0.113.9, type 0");
    memset(text, 0, sizeof text);
    failures += demo_check(select_interface_by_name_AddPools(h, "spare", text) != NULL && strcmp(text, "eth3") == 0,
                           "pool spare is bound to eth3");

    /* Assets are written by other processes; an unknown one is simply absent. */
    strcpy(text, "unchanged");
    failures += demo_check(selectSAnameByAssetname(h, "printer", text) == NULL && strcmp(text, "unchanged") == 0 &&
                               deleteAssetByName(h, "printer") == 0,
                           "unknown asset printer: no zone, delete is a no-op");

    failures += demo_check(util_db_query_commonSecurityAreas(h) == 0 && util_db_query_commonAddressPools(h) == 0,
                           "zone and pool tables dumped to the log");
    return failures;
}
