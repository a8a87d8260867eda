/* util-db-demo: configures a small firewall appliance through libutil-database
 * and prints the configuration read back. */
#include <stdio.h>
#include <string.h>

#include "demo.h"

int demo_check(int ok, const char* what) {
    printf("  %-5s %s\n", ok ? "ok" : "FAIL", what);
    return ok ? 0 : 1;
}

int main(void) {
    db_handle_t handle;
    memset(&handle, 0, sizeof handle);
    if (util_db_init(&handle) == NULL || util_db_connect(&handle) == NULL) {
        fprintf(stderr, "cannot connect to the configuration database\n");
        return 2;
    }
    int failures = 0;
    printf("== Interfaces\n");
    failures += demo_interfaces(&handle);
    printf("== Zones, address pools, assets\n");
    failures += demo_zones(&handle);
    printf("== Services, routes, policies\n");
    failures += demo_services(&handle);
    printf("== Applications and inspection\n");
    failures += demo_inspection(&handle);
    printf("== Device settings\n");
    failures += demo_device(&handle);
    util_db_disconnect(&handle);
    util_db_deinit(&handle);
    printf("%d failure(s)\n", failures);
    return failures == 0 ? 0 : 1;
}
