/*
 * util-db-RouteDatas.cpp - static routes.
 */
#include "util-db-RouteDatas.h"

#include <stdlib.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

extern "C" {
char db_str_route_delete_all[24] = "delete from RouteDatas;";
}

namespace {

/* Size of the text fields of db_route_info. */
constexpr size_t kFieldSize = sizeof(db_route_info::destIpMask);

/* Columns of RouteDatas in table order. */
enum Column : unsigned int {
    kDestIpMask = 1,
    kGateWayNextJump = 2,
    kOutInterfaceName = 3,
    kPriority = 4,
    kManageScope = 5,
};

}  // namespace

extern "C" {

int getRouteDatasgateInfoByIdx(db_handle_t* connection, struct db_route_info* route_info) {
    if (connection == NULL || route_info == NULL || route_info->routeId <= 0) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select * from RouteDatas where routeId = '%d';", route_info->routeId);
    Result res = util_db::store(connection, sql);
    if (!res) {
        return -1;
    }
    /* More than one match is an error; none goes on to fail at the fetch. */
    const int count = res.rows_int();
    if (count < 0 || count >= 2) {
        util_db::log_error(util_db::kRowMessages.empty);
        return -1;
    }
    MYSQL_ROW row = res.fetch();
    /* A table laid out with fewer columns reads its missing cells as NULL. */
    const unsigned int fields = res.fields();
    auto cell = [&](unsigned int i) -> const char* { return i < fields ? row[i] : NULL; };
    if (row == NULL || cell(kDestIpMask) == NULL ||
        (cell(kGateWayNextJump) == NULL && cell(kOutInterfaceName) == NULL)) {
        util_db::log_error(util_db::kRowMessages.fetch);
        return -1;
    }
    util_db::copy_bounded(route_info->destIpMask, cell(kDestIpMask), kFieldSize);
    /* Exactly one of gateway and interface is written; the gateway wins. */
    if (cell(kGateWayNextJump) != NULL) {
        util_db::copy_bounded(route_info->gateWayNextJump, cell(kGateWayNextJump), kFieldSize);
    } else {
        util_db::copy_bounded(route_info->outInterfaceName, cell(kOutInterfaceName), kFieldSize);
    }
    if (cell(kPriority) != NULL) {
        route_info->priority = atoi(cell(kPriority));
    }
    if (cell(kManageScope) != NULL) {
        route_info->manageScope = atoi(cell(kManageScope));
    }
    return count;
}

int insertRouteDatasgateInfo(db_handle_t* connection, const char* destIpMask, const char* gateWayNextJump,
                             const char* outInterfaceName, int distance, int priority) {
    if (connection == NULL || destIpMask == NULL || (gateWayNextJump == NULL && outInterfaceName == NULL)) {
        return -1;
    }
    /* Given both, only the interface is stored; given only a gateway, the
     * interface column says "any". */
    const bool by_gateway = gateWayNextJump != NULL && outInterfaceName == NULL;
    Statement sql(connection);
    sql.text("insert into RouteDatas (destIpMask");
    if (by_gateway) {
        sql.text(",gateWayNextJump");
        sql.text(",outInterfaceName");
    } else {
        sql.text(",outInterfaceName");
    }
    if (distance != 0) {
        sql.text(",manageScope");
    }
    if (priority != 0) {
        sql.text(",priority");
    }
    sql.append(") VALUES('%s'", destIpMask);
    if (by_gateway) {
        sql.append(",'%s'", gateWayNextJump);
        sql.text(",'any'");
    } else {
        sql.append(",'%s'", outInterfaceName);
    }
    if (distance != 0) {
        sql.append(",'%d'", distance);
    }
    if (priority != 0) {
        sql.append(",'%d'", priority);
    }
    sql.text(");");
    return util_db::run(connection, sql);
}

int updateRouteDatasgateInfo(db_handle_t* connection, const char* destIpMask, const char* gateWayNextJump,
                             const char* outInterfaceName, int priority, int manageScope, int routeId) {
    if (connection == NULL || destIpMask == NULL || gateWayNextJump == NULL || outInterfaceName == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE RouteDatas SET destIpMask = '%s',gateWayNextJump = '%s',outInterfaceName = '%s',priority = %d,manageScope = %d WHERE routeId = %d",
               destIpMask, gateWayNextJump, outInterfaceName, priority, manageScope, routeId);
    return util_db::run(connection, sql);
}

int deleteRouteDatasgateInfo(db_handle_t* connection, const char* destIpMask, const char* gateWayNextJump,
                             const char* outInterfaceName) {
    if (connection == NULL || destIpMask == NULL || (gateWayNextJump == NULL && outInterfaceName == NULL)) {
        return -1;
    }
    Statement sql(connection);
    sql.append("delete from RouteDatas where destIpMask = '%s' and (", destIpMask);
    if (gateWayNextJump != NULL) {
        sql.append("gateWayNextJump = '%s'", gateWayNextJump);
    }
    if (outInterfaceName != NULL) {
        if (gateWayNextJump != NULL) {
            sql.text(" or ");
        }
        sql.append("outInterfaceName = '%s'", outInterfaceName);
    }
    sql.text(")");
    return util_db::run(connection, sql);
}

int deleteRouteDatasAllInfo(db_handle_t* connection) {
    if (connection == NULL) {
        return -1;
    }
    return util_db::run(connection, db_str_route_delete_all);
}

}  /* extern "C" */
