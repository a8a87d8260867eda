/*
 * util-db-error.h - the error-text table (shipped with one zero entry).
 */
#ifndef UTIL_DB_ERROR_H
#define UTIL_DB_ERROR_H

#include "util-db-export.h"

#ifdef __cplusplus
extern "C" {
#endif

struct util_db_help_info {
    int err_code;
    const char* err_str;
};

UTIL_DB_API extern struct util_db_help_info error_help_info[1];

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_ERROR_H */
