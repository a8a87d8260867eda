/*
 * util-db-Assets.cpp - assets by name: the zone and the address of an asset,
 * and its deletion.
 */
#include "util-db-Assets.h"

#include "util-db-accessor.h"

using util_db::RowMessages;
using util_db::Statement;

namespace {

constexpr RowMessages kLookupMessages = {"03:mysql_num_rows(), data is empty or error!",
                                         "04:mysql_fetch_row() exec error!"};

}  // namespace

char* selectSAnameByAssetname(db_handle_t* connection, char* name, char* ret_str) {
    if (connection == NULL || name == NULL) {
        return NULL;
    }
    Statement sql(connection);
    sql.format("select securityAreaName from Assets where name= '%s';", name);
    return util_db::lookup_string(connection, sql, ret_str, kLookupMessages);
}

char* selectipAddressByAssetname(db_handle_t* connection, char* name, char* ret_str) {
    if (connection == NULL || name == NULL) {
        return NULL;
    }
    Statement sql(connection);
    sql.format("select ipAddress from Assets where name= '%s';", name);
    return util_db::lookup_string(connection, sql, ret_str, kLookupMessages);
}

int deleteAssetByName(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("delete from Assets where name = '%s';", name);
    return util_db::run(connection, sql);
}
