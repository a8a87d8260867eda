/*
 * util-db-addresspools.cpp - address pools: add or replace by name, single
 * column writes, look-ups by name and the table dump.
 */
#include "util-db-addresspools.h"

#include <stdlib.h>
#include <string.h>

#include "util-db-accessor.h"

using util_db::Need;
using util_db::Result;
using util_db::RowMessages;
using util_db::Site;
using util_db::Statement;

namespace {

constexpr RowMessages kLookupMessages = {"03:mysql_num_rows(), data is empty or error!\n",
                                         "04:mysql_fetch_row() exec error!\n"};

/* Traces the statement as the caller's site, then runs it. */
int run_traced(db_handle_t* connection, const Statement& sql, Site site) {
    util_db::log_statement(site, 7, sql.c_str());
    return util_db::run(connection, sql);
}

/* The first row of a look-up by name whose first cell is set, or NULL. */
MYSQL_ROW lookup(db_handle_t* connection, const Statement& sql, Result& res) {
    return util_db::first_row(connection, sql, res, kLookupMessages, Need::Value);
}

}  // namespace

int deleteAddressPoolsTableByName(db_handle_t* connection, char* name) {
    if (connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    /* name is not checked: a NULL one is spelt as the C library spells it. */
    sql.format("delete from AddressPools where name = '%s'", util_db::text_or_null(name));
    return run_traced(connection, sql, UTIL_DB_HERE);
}

int insertAddressPoolsTable(db_handle_t* connection, char* name, char* interfaceName, char* ipAddress, int type,
                            int enable) {
    if (connection == NULL || name == NULL || interfaceName == NULL || ipAddress == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select addressPoolId from AddressPools where name = '%s';", name);
    /* The look-up stays open while the write runs. */
    Result existing = util_db::store(connection, sql);
    if (!existing) {
        return -1;
    }
    if (existing.rows() > 0) {
        sql.format("UPDATE AddressPools SET interfaceName = '%s',ipAddress = '%s',type = %d,enable = %d WHERE name = '%s'",
                   interfaceName, ipAddress, type, enable, name);
    } else {
        sql.format("insert into AddressPools (name,interfaceName,ipAddress,type,enable) VALUES('%s','%s','%s',%d,%d);",
                   name, interfaceName, ipAddress, type, enable);
    }
    return util_db::run(connection, sql);
}

int addAddressPoolsNameTable(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("insert into AddressPools (name) VALUES('%s');", name);
    return run_traced(connection, sql, UTIL_DB_HERE);
}

int updateAddressPoolsTableEnable(db_handle_t* connection, char* name, int enable) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE AddressPools SET enable = %d WHERE name = '%s'", enable, name);
    return run_traced(connection, sql, UTIL_DB_HERE);
}

int updateAddressPoolsTableInterface(db_handle_t* connection, char* name, char* interfaceName) {
    if (connection == NULL || name == NULL || interfaceName == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE AddressPools SET interfaceName = '%s' WHERE name = '%s'", interfaceName, name);
    return run_traced(connection, sql, UTIL_DB_HERE);
}

int updateAddressPoolsTableIp(db_handle_t* connection, char* name, char* ipAddress) {
    if (connection == NULL || name == NULL || ipAddress == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE AddressPools SET ipAddress = '%s' WHERE name = '%s'", ipAddress, name);
    return run_traced(connection, sql, UTIL_DB_HERE);
}

int util_db_query_commonAddressPools(db_handle_t* connection) {
    return util_db::dump_table(connection, "AddressPools", 7, UTIL_DB_HERE);
}

char* select_interface_by_name_AddPools(db_handle_t* connection, char* name, char* ret_str) {
    if (connection == NULL || name == NULL) {
        return NULL;
    }
    Statement sql(connection);
    sql.format("select interfaceName from AddressPools where name= '%s';", name);
    return util_db::lookup_string(connection, sql, ret_str, kLookupMessages, Need::Value);
}

char* select_ipAddress_by_name_ipAdd(db_handle_t* connection, char* name, char* ret_str) {
    if (connection == NULL || name == NULL) {
        return NULL;
    }
    Statement sql(connection);
    sql.format("select ipAddress from AddressPools where name= '%s';", name);
    return util_db::lookup_string(connection, sql, ret_str, kLookupMessages, Need::Value);
}

int get_address_type_by_name(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select type from AddressPools where name= '%s';", name);
    Result res;
    MYSQL_ROW row = lookup(connection, sql, res);
    return row != NULL ? atoi(row[0]) : -1;
}
