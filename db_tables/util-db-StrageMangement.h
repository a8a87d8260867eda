/*
 * util-db-StrageMangement.h - remote-service strategy rules (table
 * StrategyRules): switch a named rule on or off and replace its data.
 *
 * Conventions:
 *  1. Results are int: 0 on success, -1 when an argument check or the
 *     statement fails.
 *  2. The connection is not tested here: a NULL connection is refused by the
 *     statement layer, so the call still returns -1.
 *  3. The functions update an existing rule by its name; they never create
 *     one. A name that does not exist succeeds (0) and changes nothing.
 *  4. Nothing is allocated for the caller; the caller keeps ownership of the
 *     strings it passes.
 *  5. Names and rule data are put into the statement verbatim between single
 *     quotes, never escaped: rule data holding a quote makes the call fail.
 *     Statements are cut silently at 1023 characters.
 */
#ifndef UTIL_DB_STRAGEMANGEMENT_H
#define UTIL_DB_STRAGEMANGEMENT_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Replaces the data of rule strategyRuleName with ruleData and re-enables the
 * rule (disabled = 0). -1 when strategyRuleName or ruleData is NULL or the
 * statement fails. */
UTIL_DB_API int setRemoteServiceStrategyRuleName(db_handle_t* connection, const char* strategyRuleName,
                                                 const char* ruleData);

/* Enables rule strategyRuleName (disabled = 0); its data is kept. -1 when
 * strategyRuleName is NULL or the statement fails. */
UTIL_DB_API int setOnRemoteServiceportStrageMangement(db_handle_t* connection, const char* strategyRuleName);

/* Disables rule strategyRuleName (disabled = 1); its data is kept. -1 when
 * strategyRuleName is NULL or the statement fails. */
UTIL_DB_API int setOffRemoteServiceportStrageMangement(db_handle_t* connection, const char* strategyRuleName);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_STRAGEMANGEMENT_H */
