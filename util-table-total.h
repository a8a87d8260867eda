/*
 * util-table-total.h - the registry of table descriptions, indexed by table
 * identifier minus one (shipped empty: no table is registered).
 */
#ifndef UTIL_TABLE_TOTAL_H
#define UTIL_TABLE_TOTAL_H

#include "util-db-common.h"

#ifdef __cplusplus
extern "C" {
#endif

struct total_info {
    int table_id;
    char name[64];
    struct table_field_help* table_help;
};

UTIL_DB_API extern struct total_info total_table_help[DB_TABLE_ID_MAX - 1];

#ifdef __cplusplus
}
#endif

#endif /* UTIL_TABLE_TOTAL_H */
