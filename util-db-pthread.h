/*
 * util-db-pthread.h - lock objects of libutil-database.
 */
#ifndef UTIL_DB_PTHREAD_H
#define UTIL_DB_PTHREAD_H

#include <pthread.h>

#include "util-db-export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* Allocates a zeroed (default, not recursive) mutex that the caller owns and
 * frees; NULL when memory runs out. It is not initialised. */
UTIL_DB_API pthread_mutex_t* util_db_mutex_get(void);
/* Initialises mutex as a recursive mutex; the result of pthread_mutex_init. */
UTIL_DB_API int util_db_init_mutex(pthread_mutex_t* mutex);

#ifdef __cplusplus
}
#endif

#endif /* UTIL_DB_PTHREAD_H */
