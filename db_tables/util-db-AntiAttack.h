/*
 * util-db-AntiAttack.h - anti-attack switches and rules (table AntiAttacks,
 * one row per rule; every rule of an attack type carries the type's switch).
 *
 * Conventions:
 *  1. Results are 0 on success and -1 on failure, or a switch value / a
 *     count that is -1 on failure.
 *  2. get_defend_attack_rules fills a CALLER'S array without a bound: it
 *     must have room for every rule of the type (one element per rule).
 *  3. A negative attack type or attack-name id is refused before anything is
 *     run; status and threshold values are not checked.
 *  4. The updates are not logged; the switch getter traces the value it
 *     read at priority 7.
 */
#ifndef UTIL_DB_ANTIATTACK_H
#define UTIL_DB_ANTIATTACK_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One attack rule handed to the caller. */
typedef struct attack_rule {
    int attackNameId;
    int enable;
    int threshold; /* the rule's attackValue */
} attack_rule_t;

/* The switch of attack type attackType (as stored in the first of its rows
 * the server returns), or -1 (no rule of that type, failure). */
UTIL_DB_API int get_defend_switch_status(db_handle_t* connection, int attackType);

/* Sets the switch of every rule of attackType. 0 / -1 (a type without rules
 * is a success). */
UTIL_DB_API int set_defend_switch_status(db_handle_t* connection, int attackType, int status);

/* Sets the enable flag and threshold of rule attackNameId. 0 / -1. */
UTIL_DB_API int set_defend_switch_by_nameId(db_handle_t* connection, int attackNameId, int status, int threshold);

/* Fills rules[0], rules[1], ... with the rules of attackType in the server's
 * row order (see convention 2) and returns their number: 0 when the type has
 * none (rules untouched), -1 on failure. */
UTIL_DB_API int get_defend_attack_rules(db_handle_t* connection, int attackType, attack_rule_t* rules);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_ANTIATTACK_H */
