/*
 * util-db-Apps.h - application definitions (table Apps) and their traffic
 * traits (table Traits).
 *
 * Conventions:
 *  1. int results are 0 on success and -1 on any failure (invalid argument or
 *     failed statement). The getters return a list, or NULL when there is no
 *     row, on failure or when memory runs out.
 *  2. A list returned by a getter is the caller's: every record and every
 *     string in it is a separate heap block; release it with
 *     db_free_app_info / db_free_trait_info, nothing else.
 *  3. String fields read from the database are fixed-capacity buffers: 1024
 *     bytes for desc, 256 bytes for every other one. A value of that length
 *     or longer is stored cut to the capacity WITHOUT a terminating NUL.
 *     A NULL column leaves its field NULL (strings) or 0 (integers).
 *  4. Records passed to the add and update functions are only read. A string
 *     field that is NULL is left out of the statement; an empty string is
 *     written. type counts only when it is 0..5, inherit (update only) when
 *     it is 0 or 1.
 *  5. String values are inserted verbatim between single quotes, never
 *     escaped; the three trait values of db_update_traitby_appid are inserted
 *     without quotes at all (the caller passes valid SQL: a number or a
 *     quoted string). Statements are cut silently at 1023 characters.
 *  6. The add, update and delete statements are traced in the log at
 *     priority 7 ("mysql cmd: ...").
 */
#ifndef UTIL_DB_APPS_H
#define UTIL_DB_APPS_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

/* One application definition (a row of Apps). */
typedef struct db_app_info {
    int appid;                /* assigned by the database; not written */
    char* pname;              /* name: the key of every by-name operation */
    int type;                 /* 0..5; any other value means "no type" */
    char* sport;              /* server port text */
    char* cport;              /* client port text */
    int inherit;              /* 0 or 1 */
    char* ppdname;            /* predefined application it derives from */
    char* desc;               /* description */
    struct db_app_info* next; /* next record of a list, NULL at the end */
} db_app_info;

/* One trait of an application (a row of Traits). */
typedef struct db_trait_info {
    int traitid;                /* assigned by the database; filled on read only */
    int appid;                  /* the owning application's id */
    char* toffset;              /* offset text */
    char* trait;                /* the pattern text */
    char* depth;                /* depth text */
    struct db_trait_info* next; /* next record of a list, NULL at the end */
} db_trait_info;

/* ---- Applications ---- */

/* Adds an application from the fields of info that are present (name and
 * inherit always). 0 / -1 (conn, info or info->pname NULL; statement fails). */
UTIL_DB_API int db_add_app(db_handle_t* conn, const db_app_info* info);

/* Deletes the applications called name (none existing is a success). 0 / -1. */
UTIL_DB_API int db_del_app_by_name(db_handle_t* conn, const char* name);

/* Sets, on the application called info->pname, the fields of info that are
 * present. With no field present the statement is invalid and -1 results.
 * 0 / -1 (conn, info or info->pname NULL; statement fails). */
UTIL_DB_API int db_update_app_by_name(db_handle_t* conn, const db_app_info* info);

/* Frees a list returned by db_get_app_info_by_name. 0, or -1 for NULL. */
UTIL_DB_API int db_free_app_info(db_app_info* info);

/* The applications called name, in the server's row order, as a list owned
 * by the caller (free with db_free_app_info); NULL when there is none or on
 * failure. */
UTIL_DB_API db_app_info* db_get_app_info_by_name(db_handle_t* conn, const char* name);

/* ---- Traits ---- */

/* Adds a trait for application info->appid from the fields present.
 * 0 / -1 (conn or info NULL, info->appid below 1; statement fails). */
UTIL_DB_API int db_add_trait(db_handle_t* conn, const db_trait_info* info);

/* Deletes every trait of application appid. 0 / -1 (conn NULL; statement fails). */
UTIL_DB_API int db_del_trait_by_appid(db_handle_t* conn, int appid);

/* Sets the fields of info that are present (unquoted, see convention 5) on
 * every trait of application info->appid. 0 / -1 (conn or info NULL,
 * info->appid 0; statement fails). A negative id is passed through. */
UTIL_DB_API int db_update_traitby_appid(db_handle_t* conn, const db_trait_info* info);

/* Frees a list returned by db_get_trait_info_by_appid. 0, or -1 for NULL. */
UTIL_DB_API int db_free_trait_info(db_trait_info* info);

/* The traits of application appid in the server's row order, as a list owned
 * by the caller (free with db_free_trait_info); NULL when there is none, for
 * appid 0 (nothing is queried) or on failure. */
UTIL_DB_API db_trait_info* db_get_trait_info_by_appid(db_handle_t* conn, int appid);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_APPS_H */
