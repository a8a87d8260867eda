/*
 * util-db-StrageMangement.cpp - remote-service strategy rules (StrategyRules).
 *
 * A rule is active while its disabled column is 0. Writing a rule's data also
 * re-enables it. The connection is left to db_query, which refuses a NULL one.
 * Nothing is read back or logged.
 */
#include "util-db-StrageMangement.h"

#include "util-db-accessor.h"

namespace {

/* Switches a rule on (0) or off (1), keeping its data. */
int set_rule_disabled(db_handle_t* connection, const char* strategyRuleName, int disabled) {
    if (strategyRuleName == NULL) {
        return -1;
    }
    return util_db::run_format(connection, "update StrategyRules set disabled = %d where strategyRuleName = '%s';",
                         disabled, strategyRuleName);
}

}  // namespace

extern "C" {

int setRemoteServiceStrategyRuleName(db_handle_t* connection, const char* strategyRuleName, const char* ruleData) {
    if (strategyRuleName == NULL || ruleData == NULL) {
        return -1;
    }
    return util_db::run_format(connection, "UPDATE StrategyRules set disabled = %d, ruleData  = '%s' where strategyRuleName = '%s';",
                         0, ruleData, strategyRuleName);
}

int setOnRemoteServiceportStrageMangement(db_handle_t* connection, const char* strategyRuleName) {
    return set_rule_disabled(connection, strategyRuleName, 0);
}

int setOffRemoteServiceportStrageMangement(db_handle_t* connection, const char* strategyRuleName) {
    return set_rule_disabled(connection, strategyRuleName, 1);
}

}  // extern "C"
