/*
 * util-db-PolicyToDpiWhitelist.cpp - policy-to-whitelist references.
 */
#include "util-db-PolicyToDpiWhitelist.h"

#include <stdlib.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

namespace {

/* A cell as text for the trace, and as a number (a NULL cell counts as 0). */
const char* cell_text(const char* cell) { return cell != NULL ? cell : "(null)"; }
int cell_int(const char* cell) { return cell != NULL ? atoi(cell) : 0; }

/* The whitelist of the first row of a select, traced and as a number; -1
 * when there is no row. */
int select_whitelist(db_handle_t* connection, const util_db::StatementBase& sql) {
    Result res;
    MYSQL_ROW row = util_db::first_row(connection, sql, res, util_db::kRowMessages);
    if (row == NULL) {
        return -1;
    }
    UTIL_DB_LOG(7, "%s\t\n", cell_text(row[0]));
    return cell_int(row[0]);
}

}  // namespace

extern "C" {

int insertPolicyToDpiWhitelist(db_handle_t* connection, const char* signame, const char* whitelist, int sid) {
    if (connection == NULL || signame == NULL || whitelist == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("insert into PolicyToDpiWhitelist (signame,whitelist,sid) VALUES('%s','%s',%d);", signame, whitelist, sid);
    return util_db::run(connection, sql);
}

int deletePolicyToDpiWhitelistSid(db_handle_t* connection, int sid) {
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("delete from PolicyToDpiWhitelist where sid = %d", sid);
    return util_db::run(connection, sql);
}

int deletePolicyToDpiWhitelistAll(db_handle_t* connection) {
    if (connection == NULL) {
        return -1;
    }
    return util_db::run(connection, "delete from PolicyToDpiWhitelist");
}

int selectPolicyToDpiWhitelistById(db_handle_t* connection, int id) {
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select whitelist from PolicyToDpiWhitelist where id= %d", id);
    return select_whitelist(connection, sql);
}

int selectPolicyToDpiWhitelistBySid(db_handle_t* connection, int sid) {
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select whitelist from PolicyToDpiWhitelist where sid= %d", sid);
    return select_whitelist(connection, sql);
}

int getPolicyToDpiWhitelistPolicyNum(db_handle_t* connection, const char* whitelist) {
    if (connection == NULL || whitelist == NULL) {
        return -1;
    }
    Result res = util_db::store(connection, "SELECT whitelist,count(*) as count FROM PolicyToDpiWhitelist group by whitelist");
    if (!res) {
        return -1;
    }
    /* Every cell of every row adds to the sum: the whitelist names taken as
     * numbers as well as their counts. The sum is only traced. */
    const unsigned int fields = res.fields();
    int sum = 0;
    while (MYSQL_ROW row = res.fetch()) {
        for (unsigned int i = 0; i < fields; ++i) {
            sum += cell_int(row[i]);
        }
    }
    UTIL_DB_LOG(7, "%d\n", sum);
    return 0;
}

}  // extern "C"
