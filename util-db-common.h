/*
 * util-db-common.h - connection handle, statement execution and the generic
 * field model of libutil-database.
 *
 * Conventions of the whole library:
 *  1. The caller owns a db_handle_t (zeroed before first use), prepares it with
 *     util_db_init, connects it with util_db_connect (or lets the first
 *     statement connect it) and passes it as the first argument of every table
 *     function. It releases it with util_db_disconnect, then util_db_deinit.
 *  2. int results are 0 for success and -1 for failure, or an identifier or a
 *     count that is -1 on failure; string look-ups return the caller's buffer
 *     or NULL; list look-ups return a heap list (freed with the module's free
 *     function) or NULL; array look-ups return a count and hand over a heap
 *     array. No error state is kept in the handle; the server's error text
 *     reaches only the log (util-db-log.h).
 *  3. String values are inserted into statements verbatim between single
 *     quotes, never escaped: callers pass clean values. Statements are built in
 *     1024-byte buffers and an over-long one is cut silently.
 *  4. Caller buffers are sized by the caller; where a function copies without a
 *     bound, its header says so.
 *  5. Every statement runs under the handle's recursive mutex; a handle
 *     marked disconnected is reconnected by its next statement. Handles are
 *     independent of each other; a multi-statement operation is not atomic.
 *
 * The safe profile (a build option; same names, records and headers) departs
 * from 1, 3 and 5 where the default is hazardous:
 *  - a string value placed between quotes is escaped for the connection
 *    (character set, NO_BACKSLASH_ESCAPES); a value placed without quotes
 *    must be one SQL literal (a column name: one plain name); a statement that does not fit its buffer is
 *    not sent. Each refusal fails the call and logs a priority-3 record.
 *  - a statement that fails because the connection is gone marks the handle
 *    disconnected, so the next statement reconnects; none is sent twice.
 *  - the time-outs below bound every connect, read and write, so that a call
 *    against a frozen or unreachable server fails within 15 seconds (a
 *    reconnect inside the call included).
 *  - result sets and partial lists are always freed.
 */
#ifndef UTIL_DB_COMMON_H
#define UTIL_DB_COMMON_H

#include <pthread.h>
#include <stdint.h>
#include <mysql.h>

#include "util-db-export.h"
#include "util-db-log.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Safe profile: seconds allowed for a connect (the server's greeting
 * included), and for each read and each write of a statement. */
#define UTIL_DB_CONNECT_TIMEOUT 3
#define UTIL_DB_READ_TIMEOUT 4
#define UTIL_DB_WRITE_TIMEOUT 4

/* The client library's connection object and result set. */
typedef MYSQL db_fd_t;
typedef MYSQL_RES db_res;

/* A connection handle, owned by the caller. */
struct db_handle {
    void* conn;              /* db_fd_t allocated by util_db_init, NULL when not initialised */
    uint32_t flag;           /* bit 0: connected; other bits are the caller's */
    pthread_mutex_t* mutex;  /* recursive mutex allocated by util_db_init */
};
typedef struct db_handle db_handle_t;

/* ---- Connection handle and lifecycle ---- */

/* Allocates the handle's mutex and client object if absent; does not connect.
 * Returns handle, or NULL (NULL handle, allocation failure). */
UTIL_DB_API db_handle_t* util_db_init(db_handle_t* handle);
/* (Re)initialises the client object and connects to the configuration database
 * (127.0.0.1, root, database "firewall"). Returns handle, or NULL. */
UTIL_DB_API db_handle_t* util_db_connect(db_handle_t* handle);
/* Pings a connected handle: 0 when alive; -1 when invalid or marked
 * disconnected; the ping's own nonzero value when it fails (the handle is then
 * marked disconnected). */
UTIL_DB_API int util_db_chkconnect(db_handle_t* handle);
/* Closes the connection and marks the handle disconnected. */
UTIL_DB_API void util_db_disconnect(db_handle_t* handle);
/* Frees the client object (without closing it: disconnect first) and the mutex.
 * Returns 0, or -1 for an invalid handle. */
UTIL_DB_API int util_db_deinit(db_handle_t* handle);

/* ---- Statement execution ---- */

/* Runs one statement whose rows are not read. 0 or -1. */
UTIL_DB_API int db_query(db_handle_t* handle, const char* cmd);
/* Runs one statement and returns its buffered result set (a db_res*), owned by
 * the caller and released with mysql_free_result; NULL on failure. */
UTIL_DB_API void* db_store_result(db_handle_t* handle, const char* cmd);

/* ---- Field, condition and table-description model ---- */

typedef enum {
    DB_TYPE_NULL = 0,
    DB_INT = 1,
    DB_TINYINT = 2,
    DB_VARCHAR = 3,
    DB_DATETIME = 4,
    DB_STRING = 5,
    DB_TYPE_MAX = 6
} db_field_type_t;

typedef enum {
    DB_COND_TYPE_NULL = 0,
    DB_EQU = 1,
    DB_GT = 2,
    DB_LT = 3,
    DB_NEQ = 4,
    DB_COND_TYPE_MAX = 5
} db_cond_type_t;

typedef enum {
    DB_LOGIC_TYPE_NULL = 0,
    DB_AND = 1,
    DB_OR = 2,
    DB_NOT = 3,
    DB_LOGIC_TYPE_MAX = 4
} db_logic_type_t;

typedef enum {
    DB_TABLE_NULL = 0,
    DB_TABLE_ID_HA = 1,
    DB_TABLE_ID_MAX = 2
} db_table_id_t;

/* One typed value of one column in a condition. */
struct db_field {
    db_field_type_t type;
    int id; /* the column's identifier within its table, 1-based */
    union {
        int integer;
        char string[64];
        double real;
        void* pointer;
    } value;
    db_cond_type_t cond;
    db_logic_type_t logic;
};

/* The description of one column. */
struct table_field_help {
    int id;
    char name[64];
    db_field_type_t type;
    int bit_lenth;
    unsigned int flags;
    int init_val;
    int prim_key;
};

struct util_db_cond {
    db_cond_type_t type;
    char cond_flag[10];
};

struct util_db_logic {
    db_logic_type_t type;
    char logic_flag[10];
};

/* Comparison and logic operators with their SQL forms, each ending with a zero row. */
UTIL_DB_API extern struct util_db_cond db_cond[5];
UTIL_DB_API extern struct util_db_logic db_logic[4];

/* Copies *field into row[field_id - 1]. -1 when row or field is NULL or
 * field_id is 0, else 0. row_idmax is not used: the caller sizes row. */
UTIL_DB_API int db_fill_row(struct db_field* row, struct db_field* field, int field_id, int row_idmax);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_COMMON_H */
