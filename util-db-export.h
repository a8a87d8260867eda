/*
 * util-db-export.h - the one export macro of libutil-database.
 *
 * The library is built with hidden visibility; only declarations marked
 * UTIL_DB_API are exported from libutil-database.so.
 */
#ifndef UTIL_DB_EXPORT_H
#define UTIL_DB_EXPORT_H

#if defined(__GNUC__)
#define UTIL_DB_API __attribute__((visibility("default")))
#else
#define UTIL_DB_API
#endif

#endif /* UTIL_DB_EXPORT_H */
