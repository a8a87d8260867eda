/*
 * util-db-Predefsrv.h - the port rules of a service, looked up by name among
 * the predefined services first (PredefineServers, PredefineServerRules), then
 * among the user-defined ones (Servers, ServerRules).
 *
 * Conventions:
 *  1. db_get_srv_info_by_name returns a heap list, or NULL when the name is
 *     unknown, a statement fails or memory runs out.
 *  2. The caller owns every node of the list and every node's pname buffer and
 *     releases the whole list with db_free_predefsrv_info.
 *  3. The name is inserted into the statements verbatim between single quotes,
 *     never escaped: pass clean values.
 *  4. A port cell that is NULL in the database reads as 0.
 */
#ifndef UTIL_DB_PREDEFSRV_H
#define UTIL_DB_PREDEFSRV_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One port rule of a service; the rules of one service form a list in the
 * order the database returned them. */
struct db_predefsrv_info {
    char* pname;                     /* 256-byte heap copy of the service name (not
                                        terminated at 256 characters), or NULL */
    int minsport;                    /* lowest source port */
    int maxsport;                    /* highest source port */
    int mindport;                    /* lowest destination port */
    int maxdport;                    /* highest destination port */
    struct db_predefsrv_info* next;  /* next rule, NULL at the end */
};

/* The port rules of the service called `name`: the predefined service of that
 * name if there is one, else the user-defined one. Returns the head of the
 * list (owned by the caller, released with db_free_predefsrv_info), or NULL. */
UTIL_DB_API struct db_predefsrv_info* db_get_srv_info_by_name(db_handle_t* conn, char* name);

/* Frees every node from `info` to the end of the list, with its pname.
 * Returns 0, or -1 when `info` is NULL. */
UTIL_DB_API int db_free_predefsrv_info(struct db_predefsrv_info* info);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_PREDEFSRV_H */
