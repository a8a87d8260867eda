/* Services, routes, policies: a web service with its port rules, two static
 * routes and a control policy that allows the service. */
#include <stdio.h>
#include <stdlib.h>
#include <string.h>

#include "demo.h"

/* The routeId of the route to `dest` most recently added, or -1. */
static int last_route_to(db_handle_t* h, const char* dest) {
    char sql[256];
    snprintf(sql, sizeof sql, "select max(routeId) from RouteDatas where destIpMask = '%s'", dest);
    MYSQL_RES* res = (MYSQL_RES*)db_store_result(h, sql);
    if (res == NULL) {
        return -1;
    }
    MYSQL_ROW row = mysql_fetch_row(res);
    const int id = (row != NULL && row[0] != NULL) ? atoi(row[0]) : -1;
    mysql_free_result(res);
    return id;
}

static int demo_service_objects(db_handle_t* h) {
    int failures = 0;
    char name[] = "intranet-web";

    /* Start from a clean service of that name (absent on a first run). */
    if (checkServersByName(h, name) > 0) {
        deleteServersByName(h, name);
    }
    failures += demo_check(insertServersName(h, name, "intranet web servers") == 0, "add service intranet-web");
    failures += demo_check(setServerRules(h, name, 6, "65535", "1024", "80", "80") == 0, "rule tcp 1024-65535 -> 80");
    failures += demo_check(setServerRules(h, name, 6, "65535", "1024", "8443", "8443") == 0,
                           "rule tcp 1024-65535 -> 8443");
    failures += demo_check(setICMPServerRules(h, name, 1) == 0, "rule icmp");
    failures += demo_check(checkServersByName(h, name) == 1, "service exists once");

    struct db_predefsrv_info* rules = db_get_srv_info_by_name(h, name);
    int n = 0;
    for (struct db_predefsrv_info* r = rules; r != NULL; r = r->next) {
        printf("  %s: src %d-%d dst %d-%d\n", r->pname ? r->pname : "?", r->minsport, r->maxsport, r->mindport,
               r->maxdport);
        ++n;
    }
    failures += demo_check(n == 3 && rules->mindport == 80 && rules->next->maxdport == 8443,
                           "intranet-web looked up with its three rules");
    db_free_predefsrv_info(rules);

    rules = db_get_srv_info_by_name(h, "SSH");
    failures += demo_check(rules != NULL && rules->mindport == 22, "predefined SSH is port 22");
    db_free_predefsrv_info(rules);
    return failures;
}

static int demo_routes(db_handle_t* h) {
    int failures = 0;
    struct db_route_info route;

    deleteRouteDatasgateInfo(h, "10.20.0.0/16", "192.168.1.254", NULL);
    deleteRouteDatasgateInfo(h, "0.0.0.0/0", NULL, "eth1");
    failures += demo_check(insertRouteDatasgateInfo(h, "10.20.0.0/16", "192.168.1.254", NULL, 0, 5) == 0,
                           "route 10.20.0.0/16 via 192.168.1.254");
    failures += demo_check(insertRouteDatasgateInfo(h, "0.0.0.0/0", NULL, "eth1", 2, 0) == 0,
                           "default route out of eth1");

    memset(&route, 0, sizeof route);
    route.routeId = last_route_to(h, "10.20.0.0/16");
    failures += demo_check(route.routeId > 0 && getRouteDatasgateInfoByIdx(h, &route) == 1 &&
                               strcmp(route.gateWayNextJump, "192.168.1.254") == 0 && route.priority == 5,
                           "route read back by id");
    printf("  route %d: %.40s via %.40s priority %d\n", route.routeId, route.destIpMask, route.gateWayNextJump,
           route.priority);

    memset(&route, 0, sizeof route);
    route.routeId = last_route_to(h, "0.0.0.0/0");
    failures += demo_check(route.routeId > 0 && getRouteDatasgateInfoByIdx(h, &route) == 1 &&
                               strcmp(route.outInterfaceName, "eth1") == 0 && route.manageScope == 2,
                           "default route read back by id");
    printf("  route %d: %.40s dev %.40s distance %d\n", route.routeId, route.destIpMask, route.outInterfaceName,
           route.manageScope);

    /* A temporary route, added and removed again. */
    failures += demo_check(insertRouteDatasgateInfo(h, "172.16.0.0/12", "192.168.1.253", NULL, 0, 0) == 0 &&
                               deleteRouteDatasgateInfo(h, "172.16.0.0/12", "192.168.1.253", NULL) == 0 &&
                               last_route_to(h, "172.16.0.0/12") == -1,
                           "temporary route added and deleted");
    return failures;
}

static int demo_policies(db_handle_t* h) {
    int failures = 0;
    char name[] = "allow-intranet-web";

    /* Policies are written by the policy editor; the demo stands in for it. */
    deletePolicyByName(h, name);
    failures += demo_check(db_query(h, "insert into CPolicies (name, serviceAppType) values ('allow-intranet-web', 1)") == 0,
                           "policy allow-intranet-web stored");
    const int id = getPolicyIdByName(h, name);
    printf("  policy %s has id %d\n", name, id);
    failures += demo_check(id > 0, "policy id found by name");
    failures += demo_check(getPolicyNumBySerAPPType(h) >= 1, "policies by service counted");
    return failures;
}

int demo_services(db_handle_t* h) {
    return demo_service_objects(h) + demo_routes(h) + demo_policies(h);
}
