/*
 * util-db-Servers.cpp - user-defined service objects and their port rules.
 */
#include "util-db-Servers.h"

#include <stdlib.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

namespace {

/* Finds the serverId of the first service called `name` into *server_id; the
 * look-up's result set stays in `res`. False (messages logged, result freed)
 * when there is none. */
bool find_server(db_handle_t* connection, const char* name, Statement& sql, Result& res, int* server_id) {
    sql.format("select serverId from Servers where name= '%s'", name);
    MYSQL_ROW row = util_db::first_row(connection, sql, res, util_db::kRowMessages);
    if (row == NULL) {
        return false;
    }
    *server_id = atoi(row[0]);
    return true;
}

/* Runs a change statement that names a service; the statement is traced at
 * error priority, as these two always have been. */
int change_service(db_handle_t* connection, Statement& sql) {
    UTIL_DB_LOG(3, "mysql cmd: %s\n", sql.c_str());
    return util_db::run(connection, sql);
}

/* Looks up the serverId of the first service called `name`, then formats the
 * rule statement for it into the same buffer and runs it. */
template <typename Format>
int change_rules(db_handle_t* connection, char* name, Format format_rule) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    Result res;
    int server_id = 0;
    if (!find_server(connection, name, sql, res, &server_id)) {
        return -1;
    }
    res.reset();
    format_rule(sql, server_id);
    return util_db::run(connection, sql);
}


}  // namespace

extern "C" {

int checkServersByName(db_handle_t* connection, char* name) {
    if (name == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("select * from Servers where name = '%s';", name);
    Result res = util_db::store(connection, sql);
    if (!res) {
        return -1;
    }
    const int count = res.rows_int();
    if (count < 0) {
        /* Not reachable for a real table; the result set stays as it is. */
        util_db::log_error(util_db::kRowMessages.empty);
        res.abandon();
        return -1;
    }
    res.reset();
    UTIL_DB_LOG(3, "checkServersByName return: %d\n", count);
    return count;
}

int insertServersName(db_handle_t* connection, char* name, char* description) {
    if (connection == NULL || name == NULL || description == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("insert into Servers(name, description) VALUES('%s','%s');", name, description);
    return change_service(connection, sql);
}

int updateServersName(db_handle_t* connection, char* name, char* description) {
    if (connection == NULL || name == NULL || description == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("update Servers set description = '%s' where name = '%s';", description, name);
    return change_service(connection, sql);
}

int deleteServersByName(db_handle_t* connection, char* name) {
    if (connection == NULL || name == NULL) {
        return -1;
    }
    Statement sql(connection);
    Result res; /* kept until both deletes have run */
    int server_id = 0;
    if (!find_server(connection, name, sql, res, &server_id)) {
        return -1;
    }
    /* Rules first, by identifier; then every service row of that name. */
    sql.format("delete from ServerRules where serverId = %d", server_id);
    if (util_db::run(connection, sql) != 0) {
        return -1;
    }
    sql.format("delete from Servers where name = '%s'", name);
    return util_db::run(connection, sql);
}

int setServerRules(db_handle_t* connection, char* name, int type, char* maxsrcport, char* minsrcport,
                   char* maxdstport, char* mindstport) {
    return change_rules(connection, name, [&](Statement& sql, int server_id) {
        sql.format("insert into ServerRules(serverId,type,maxsrcport,minsrcport,        maxdstport,mindstport) VALUES(%d, %d, '%s', '%s','%s','%s');",
                   server_id, type, util_db::text_or_null(maxsrcport), util_db::text_or_null(minsrcport), util_db::text_or_null(maxdstport),
                   util_db::text_or_null(mindstport));
    });
}

int deleteServerRules(db_handle_t* connection, char* name) {
    return change_rules(connection, name, [](Statement& sql, int server_id) {
        sql.format("delete from ServerRules where serverId = %d", server_id);
    });
}

int setICMPServerRules(db_handle_t* connection, char* name, int type) {
    return change_rules(connection, name, [&](Statement& sql, int server_id) {
        sql.format("insert into ServerRules(serverId,type)             VALUES(%d,%d);", server_id, type);
    });
}

int util_db_query_commonServers(db_handle_t* connection) {
    return util_db::dump_table(connection, "Servers", 3, UTIL_DB_HERE);
}

int util_db_query_commonServerRules(db_handle_t* connection) {
    return util_db::dump_table(connection, "ServerRules", 3, UTIL_DB_HERE);
}

}  /* extern "C" */
