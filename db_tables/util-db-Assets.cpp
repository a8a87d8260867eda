/*
 * util-db-Assets.cpp - assets by name: the zone and the address of an asset,
 * and its deletion.
 */
#include "util-db-Assets.h"

#include <string.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::RowMessages;
using util_db::Statement;

namespace {

constexpr RowMessages kLookupMessages = {"03:mysql_num_rows(), data is empty or error!",
                                         "04:mysql_fetch_row() exec error!"};

/* Copies the first cell of the first row into ret_str whole (no bound). The
 * cell is not checked for NULL with a message of its own: such a value is
 * simply not copied. */
char* lookup_copy(db_handle_t* connection, const Statement& sql, char* ret_str) {
    Result res;
    MYSQL_ROW row = util_db::first_row(connection, sql.c_str(), res, kLookupMessages);
    if (row == NULL || row[0] == NULL) {
        return NULL;
    }
    if (ret_str != NULL) {
        strcpy(ret_str, row[0]);
    }
    return ret_str;
}

}  // namespace

char* selectSAnameByAssetname(db_handle_t* connection, char* name, char* ret_str) {
    if (connection == NULL || name == NULL) {
        return NULL;
    }
    Statement sql;
    sql.format("select securityAreaName from Assets where name= '%s';", name);
    return lookup_copy(connection, sql, ret_str);
}

char* selectipAddressByAssetname(db_handle_t* connection, char* name, char* ret_str) {
    if (connection == NULL || name == NULL) {
        return NULL;
    }
    Statement sql;
    sql.format("select ipAddress from Assets where name= '%s';", name);
    return lookup_copy(connection, sql, ret_str);
}

int deleteAssetByName(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql;
    sql.format("delete from Assets where name = '%s';", name);
    return util_db::run(connection, sql.c_str());
}
