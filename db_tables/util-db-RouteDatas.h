/*
 * util-db-RouteDatas.h - static routes (table RouteDatas): a destination
 * network with a next-hop gateway or an outgoing interface.
 *
 * Conventions:
 *  1. Results: 0 for success and -1 for failure; getRouteDatasgateInfoByIdx
 *     answers 1 (the row count) on success.
 *  2. struct db_route_info is the caller's record. The read fills it without
 *     clearing it first: zero it before the call. Its text fields take bounded
 *     copies of 40 characters, without a terminator when a value fills them.
 *  3. Texts are inserted into the statements verbatim between single quotes,
 *     never escaped: pass clean values.
 *  4. A route names either a gateway or an interface. Given both, the insert
 *     stores only the interface; given only a gateway, it stores the interface
 *     "any".
 */
#ifndef UTIL_DB_ROUTEDATAS_H
#define UTIL_DB_ROUTEDATAS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One static route, in the column order of RouteDatas. */
struct db_route_info {
    int routeId;                /* key; input of the read (greater than 0) */
    char destIpMask[40];        /* destination network and mask, e.g. "10.0.0.0/8" */
    char gateWayNextJump[40];   /* next-hop gateway */
    char outInterfaceName[40];  /* outgoing interface */
    int priority;
    int manageScope;            /* the distance given to the insert */
};

/* The statement that empties the table: "delete from RouteDatas;". Writable;
 * deleteRouteDatasAllInfo runs whatever it holds. */
UTIL_DB_API extern char db_str_route_delete_all[24];

/* Reads the route whose routeId is route_info->routeId into *route_info:
 * destIpMask, then gateWayNextJump when the route has a gateway, else
 * outInterfaceName (exactly one of the two is written), then priority and
 * manageScope. Returns 1, or -1 when the arguments are invalid, no single
 * route matches, or the route has no destination or neither gateway nor
 * interface. */
UTIL_DB_API int getRouteDatasgateInfoByIdx(db_handle_t* connection, struct db_route_info* route_info);

/* Adds a route to `destIpMask` through `gateWayNextJump` or out of
 * `outInterfaceName` (at least one non-NULL; see convention 4). `distance` is
 * stored as manageScope; a zero distance or priority leaves the column's
 * default. 0 / -1. */
UTIL_DB_API int insertRouteDatasgateInfo(db_handle_t* connection, const char* destIpMask,
                                         const char* gateWayNextJump, const char* outInterfaceName,
                                         int distance, int priority);

/* Rewrites every column of the route `routeId` (all texts required). 0 / -1. */
UTIL_DB_API int updateRouteDatasgateInfo(db_handle_t* connection, const char* destIpMask,
                                         const char* gateWayNextJump, const char* outInterfaceName,
                                         int priority, int manageScope, int routeId);

/* Deletes the routes to `destIpMask` whose gateway or interface matches the
 * one(s) given (at least one non-NULL). 0 / -1. */
UTIL_DB_API int deleteRouteDatasgateInfo(db_handle_t* connection, const char* destIpMask,
                                         const char* gateWayNextJump, const char* outInterfaceName);

/* Deletes every route (runs db_str_route_delete_all). 0 / -1. */
UTIL_DB_API int deleteRouteDatasAllInfo(db_handle_t* connection);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_ROUTEDATAS_H */
