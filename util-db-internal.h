/*
 * util-db-internal.h - the core's internal functions (not exported, not
 * installed): connection steps, field-model look-ups and the allocation seam.
 */
#ifndef UTIL_DB_INTERNAL_H
#define UTIL_DB_INTERNAL_H

#include <stddef.h>

#include "util-db-common.h"
#include "util-db-error.h"
#include "util-db-pthread.h"
#include "util-table-total.h"

#ifdef __cplusplus
extern "C" {
#endif

db_fd_t* _db_init(db_fd_t* fd);
db_fd_t* _db_conn(db_fd_t* fd, const char* hostname, const char* username, const char* password,
                  const char* dbname);

char* db_get_cond(db_cond_type_t type);
char* db_get_logic(db_logic_type_t type);
char* db_val2str(struct table_field_help* table_help, int field_id);
int _db_field_val2str(struct db_field* row, char* p, int max_len);
char* db_get_table(int table_id);
struct table_field_help* db_get_help_info(int table_id);

#ifdef UTIL_DB_SAFE
/* Escapes `length` bytes of `from` into `to` (room for 2 * length + 1 bytes)
 * for the handle's connection: its character set, and whether the server
 * treats a backslash as an escape. A handle marked disconnected is connected
 * first under its lock, as a statement would be. The escaped length; -1 when
 * that connect fails; -2 for a handle that is not usable (NULL, or without its
 * client object or mutex). */
long util_db_escape(db_handle_t* handle, char* to, const char* from, unsigned long length);
#endif

/* Every heap block the library hands out or keeps comes from here. */
void* util_db_malloc(size_t size);

#ifdef UTIL_DB_TESTING
/* Test builds only: when positive, counts down at each allocation and the
 * allocation that brings it to 0 fails. */
extern int util_db_test_fail_alloc_at;
/* Test builds only: allocations made so far. */
extern unsigned long util_db_test_alloc_count;
#endif

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_INTERNAL_H */
