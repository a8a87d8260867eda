/*
 * util-db-Servers.h - user-defined service objects (table Servers) and their
 * port rules (table ServerRules).
 *
 * Conventions:
 *  1. Results: 0 for success and -1 for failure, except checkServersByName,
 *     which answers the number of services of that name (0 when there is none).
 *  2. Nothing is allocated for the caller; every argument stays the caller's.
 *  3. Names, descriptions and port texts are inserted into the statements
 *     verbatim between single quotes, never escaped: pass clean values.
 *  4. A service is found by name and the first match wins; the rule functions
 *     act on the serverId of that first match.
 *  5. Multi-statement operations (look-up, then change) are not atomic: a
 *     failure part-way leaves the statements already run in effect.
 */
#ifndef UTIL_DB_SERVERS_H
#define UTIL_DB_SERVERS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Counts the services called `name`. Returns the count (0 when none), or -1
 * when `name` is NULL or the look-up fails. */
UTIL_DB_API int checkServersByName(db_handle_t* connection, char* name);

/* Adds a service row. Does not check whether the name exists. 0 / -1. */
UTIL_DB_API int insertServersName(db_handle_t* connection, char* name, char* description);

/* Sets the description of every service called `name`. A missing name changes
 * nothing and still gives 0. 0 / -1. */
UTIL_DB_API int updateServersName(db_handle_t* connection, char* name, char* description);

/* Deletes the rules of the first service called `name`, then every service row
 * of that name. -1 when the name is unknown or a statement fails (rules already
 * deleted stay deleted). 0 / -1. */
UTIL_DB_API int deleteServersByName(db_handle_t* connection, char* name);

/* Adds a port rule to the service called `name`: `type` is the caller's
 * protocol/rule type; the port bounds are texts (NULL is not checked). -1 when
 * the name is unknown. 0 / -1. */
UTIL_DB_API int setServerRules(db_handle_t* connection, char* name, int type, char* maxsrcport,
                               char* minsrcport, char* maxdstport, char* mindstport);

/* Deletes every rule of the service called `name`. -1 when the name is
 * unknown. 0 / -1. */
UTIL_DB_API int deleteServerRules(db_handle_t* connection, char* name);

/* Adds a rule of `type` without ports (ICMP) to the service called `name`.
 * -1 when the name is unknown. 0 / -1. */
UTIL_DB_API int setICMPServerRules(db_handle_t* connection, char* name, int type);

/* Log the whole Servers / ServerRules table at priority 3, one record per cell,
 * for diagnosis. 0, or -1 for a NULL handle or a failed statement. */
UTIL_DB_API int util_db_query_commonServers(db_handle_t* connection);
UTIL_DB_API int util_db_query_commonServerRules(db_handle_t* connection);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_SERVERS_H */
