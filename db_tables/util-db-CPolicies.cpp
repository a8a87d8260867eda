/*
 * util-db-CPolicies.cpp - control policies.
 */
#include "util-db-CPolicies.h"

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

extern "C" {

int getPolicyIdByName(db_handle_t* connection, char* name) {
    Statement sql(connection);
    if (connection == NULL || name == NULL) {
        return -1;
    }
    sql.format("select policyId from CPolicies where name= '%s';", name);
    return util_db::lookup_int(connection, sql);
}

int deletePolicyByName(db_handle_t* connection, char* name) {
    Statement sql(connection);
    if (connection == NULL || name == NULL) {
        return -1;
    }
    sql.format("delete from CPolicies where name = '%s';", name);
    return util_db::run(connection, sql);
}

int getPolicyNumBySerAPPType(db_handle_t* connection) {
    Statement sql(connection);
    if (connection == NULL) {
        return -1;
    }
    sql.format("select policyId from CPolicies where serviceAppType=1;");
    Result res = util_db::store(connection, sql);
    if (!res) {
        return -1;
    }
    /* No row is fetched; a count of zero is answered like a failure. */
    const int count = res.rows_int();
    if (count > 0) {
        return count;
    }
    util_db::log_error(util_db::kRowMessages.empty);
    return -1;
}

}  /* extern "C" */
