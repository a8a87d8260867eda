/*
 * util-db-AntiAttack.cpp - anti-attack type switches and rules.
 */
#include "util-db-AntiAttack.h"

#include <stdlib.h>

#include "util-db-accessor.h"

using util_db::Result;
using util_db::Statement;

namespace {

/* atoi of a cell; a NULL cell counts as 0. */
int cell_int(const char* cell) { return cell != NULL ? atoi(cell) : 0; }

}  // namespace

extern "C" {

int get_defend_switch_status(db_handle_t* connection, int attackType) {
    if (attackType < 0 || connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT switch from AntiAttacks where attackType = %d", attackType);
    Result res;
    MYSQL_ROW row = util_db::first_row(connection, sql, res, util_db::kRowMessages);
    if (row == NULL) {
        return -1;
    }
    UTIL_DB_LOG(7, "%s\t\n", row[0] != NULL ? row[0] : "(null)");
    return cell_int(row[0]);
}

int set_defend_switch_status(db_handle_t* connection, int attackType, int status) {
    if (attackType < 0 || connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE AntiAttacks SET switch = %d WHERE attackType = %d", status, attackType);
    return util_db::run(connection, sql);
}

int set_defend_switch_by_nameId(db_handle_t* connection, int attackNameId, int status, int threshold) {
    if (attackNameId < 0 || connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("UPDATE AntiAttacks SET enable = %d,attackValue = %d WHERE attackNameId =%d", status, threshold, attackNameId);
    return util_db::run(connection, sql);
}

int get_defend_attack_rules(db_handle_t* connection, int attackType, attack_rule_t* rules) {
    if (attackType < 0 || rules == NULL || connection == NULL) {
        return -1;
    }
    Statement sql(connection);
    sql.format("SELECT attackNameId,enable,attackValue from AntiAttacks where attackType = %d", attackType);
    Result res = util_db::store(connection, sql);
    if (!res) {
        return -1;
    }
    if (res.rows() == 0) {
        util_db::log_error(util_db::kRowMessages.empty);
        return 0;
    }
    /* One element per row, as many as the type has rules: the caller sized
     * the array for them. */
    int count = 0;
    while (MYSQL_ROW row = res.fetch()) {
        rules[count].attackNameId = cell_int(row[0]);
        rules[count].enable = cell_int(row[1]);
        rules[count].threshold = cell_int(row[2]);
        ++count;
    }
    return count;
}

}  // extern "C"
