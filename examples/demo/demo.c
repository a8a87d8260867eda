/* util-db-demo: configures a small firewall appliance through libutil-database
 * and prints the configuration read back. */
#include <stdio.h>
#include <stdlib.h>
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
    printf("== Connection\n");
    failures += demo_check(util_db_chkconnect(&handle) == 0, "the configuration database answers a ping");
    failures += demo_check(db_query(&handle, "select 1") == 0, "a statement runs through the handle");
    printf("== Interfaces\n");
    failures += demo_interfaces(&handle);
    printf("== Zones, address pools, assets\n");
    failures += demo_zones(&handle);
    printf("== Services, routes, policies\n");
    failures += demo_services(&handle);
    printf("== Applications and inspection\n");
    failures += demo_applications(&handle);
    printf("== Device settings\n");
    failures += demo_device(&handle);
    /* The library's log, shown on the terminal: one statement traced and a
     * table dumped (UTIL_DB_DEMO_LOG=0 leaves it off). */
    const char* level = getenv("UTIL_DB_DEMO_LOG");
    if (level == NULL || strcmp(level, "0") != 0) {
        printf("== The library's log (level 7) while it dumps the zones\n");
        fflush(stdout);
        util_db_log_switch = 1;
        util_db_log_level = 7;
        failures += util_db_query_commonSecurityAreas(&handle) == 0 ? 0 : 1;
        util_db_log_switch = 0;
        util_db_log_level = 0;
    }
    util_db_disconnect(&handle);
    util_db_deinit(&handle);
    printf("%d failure(s)\n", failures);
    return failures == 0 ? 0 : 1;
}
