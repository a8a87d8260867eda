/* Interfaces: four ports, a VLAN on eth1, a bridge over eth2 and eth3,
 * addresses, management access and link states. */
#include <stdio.h>
#include <string.h>

#include "demo.h"

/* A zeroed record naming one interface. */
static struct _db_if_info demo_if(char* name) {
    struct _db_if_info r;
    memset(&r, 0, sizeof r);
    r.pname = name;
    return r;
}

int demo_interfaces(db_handle_t* h) {
    static char* const ports[] = {"eth0", "eth1", "eth2", "eth3"};
    struct _db_if_info r;
    int failures = 0;
    int i;

    /* Physical ports are created once and never deleted one by one. */
    for (i = 0; i < 4; ++i) {
        r = demo_if(ports[i]);
        if (db_check_if_by_name(h, &r) == 0) {
            failures += demo_check(db_if_insert(h, &r) == 0 && r.type == DB_IF_PHY, "create a physical port");
        }
        failures += demo_check(db_check_if_by_name(h, &r) == 1, "the port exists once");
    }
    failures += demo_check(db_if_delete_all(h) == 0, "start from the ports alone");

    /* A VLAN rides on eth1; its kind comes from the dot in its name. */
    r = demo_if("eth1.100");
    r.vlanId = 100;
    failures += demo_check(db_if_insert(h, &r) == 0 && r.type == DB_IF_VLAN, "create VLAN eth1.100");
    failures += demo_check(setVlanNameInterfaceNetInterfaces(h, "eth1.100", "eth1") == 0 &&
                               bindVlanTypeInterfaceNetInterfaces(h, "eth1.100", "tag") == 0,
                           "bind the VLAN to eth1");

    /* A bridge over eth2 and eth3. */
    r = demo_if("br0");
    failures += demo_check(db_if_insert(h, &r) == 0 && r.type == DB_IF_BRIDGE, "create bridge br0");
    r.pifname = "eth2";
    failures += demo_check(db_br_addif(h, &r) == 0, "add eth2 to br0");
    r.pifname = "eth3";
    failures += demo_check(db_br_addif(h, &r) == 0, "add eth3 to br0");
    failures += demo_check(get_Bridge_info_iface(h, &r) == 1 && strcmp(r.ifname_get, "eth2;eth3") == 0,
                           "br0 lists eth2;eth3");
    failures += demo_check(updateBridgeModeNetInterfaces(h, "br0", 1) == 0, "bring br0 up");

    /* Addresses, and management access on the inside port and the bridge. */
    r = demo_if("eth0");
    r.ipmask = "192.168.1.1/24";
    failures += demo_check(db_if_set_ip(h, &r) == 0, "address eth0");
    r = demo_if("br0");
    r.ipmask = "10.0.0.1/24";
    failures += demo_check(db_if_set_ip(h, &r) == 0, "address br0");
    r = demo_if("eth0");
    r.access_ctrl = "https";
    failures += demo_check(db_if_set_access_enable(h, &r) == 0, "allow https on eth0");
    failures += demo_check(setpingBridgeNetInterfaces(h, 1, "br0") == 0, "allow ping on br0");

    /* Link state of eth0, then everything read back. */
    r.status = 1;
    failures += demo_check(db_if_refresh(h, &r) == 0, "eth0 link up");
    failures += demo_check(get_interface_connnection_status(h, "eth0") == 1, "eth0 reads back as up");
    failures += demo_check(get_interface_connnection_status(h, "br0") == 1, "br0 reads back as up");

    r = demo_if("br0");
    r.pifname = "eth2";
    if (get_Bridge_info_iface(h, &r) == 1) {
        printf("  br0 members: %.*s\n", (int)sizeof r.ifname_get, r.ifname_get);
    }
    printf("  link: eth0 %d, br0 %d\n", get_interface_connnection_status(h, "eth0"),
           get_interface_connnection_status(h, "br0"));
    return failures;
}
