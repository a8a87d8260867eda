/*
 * util-db-log.h - the diagnostic log of libutil-database.
 *
 * Conventions:
 *  1. Every diagnostic goes to the system log under the identity "Util-db";
 *     the library never writes to standard output or standard error.
 *  2. Logging is off by default. It happens only while util_db_log_switch is
 *     exactly 1, and only for messages whose priority (syslog numbering,
 *     a priority outside 0..7 compares as 6) is at most util_db_log_level.
 *     The library logs at 3 (errors), 5 (connection notices) and 7 (traces).
 *  3. The calling program sets both switches directly, normally at start-up;
 *     they are read without a lock.
 *  4. Debug records (priority 7) start with "file:line " of the log site and
 *     are cut at 2048 bytes; other records are passed to syslog as they are.
 */
#ifndef UTIL_DB_LOG_H
#define UTIL_DB_LOG_H

#include "util-db-export.h"

#ifdef __cplusplus
extern "C" {
#endif

/* 1 switches logging on; any other value is off. Initially 0. */
UTIL_DB_API extern int util_db_log_switch;
/* Highest syslog priority that is logged. Initially 0 (nothing the library emits). */
UTIL_DB_API extern int util_db_log_level;

#ifdef __cplusplus
}
#endif

#if defined(__cplusplus) && defined(UTIL_DB_INTERNAL)
/* The log facility itself: for the library's own sources only. */
#include <stdarg.h>
#include <stdio.h>
#include <syslog.h>

namespace util_db {

constexpr int kLogDebugBufferSize = 2048;

/* Whether a message of priority `level` is logged now. */
inline bool log_enabled(int level) {
    if (util_db_log_switch != 1) {
        return false;
    }
    const int compared = (level < 0 || level > 7) ? 6 : level;
    return compared <= util_db_log_level;
}

inline void log_vwrite(int level, const char* file, int line, const char* fmt, va_list ap)
    __attribute__((format(printf, 4, 0)));

inline void log_vwrite(int level, const char* file, int line, const char* fmt, va_list ap) {
    if (level == 7) {
        char _db_log_msg[kLogDebugBufferSize];
        int used = snprintf(_db_log_msg, sizeof _db_log_msg, "%s:%d ", file, line);
        if (used < 0) {
            used = 0;
        }
        if (static_cast<size_t>(used) < sizeof _db_log_msg) {
            char* _p_msg = _db_log_msg + used;
            vsnprintf(_p_msg, sizeof _db_log_msg - static_cast<size_t>(used), fmt, ap);
        }
        openlog("Util-db", 3, 5);
        syslog(7, "%s", _db_log_msg);
        closelog();
        return;
    }
    openlog("Util-db", 3, 5);
    vsyslog(level, fmt, ap);
    closelog();
}

inline void log_write(int level, const char* file, int line, const char* fmt, ...)
    __attribute__((format(printf, 4, 5)));

inline void log_write(int level, const char* file, int line, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    log_vwrite(level, file, line, fmt, ap);
    va_end(ap);
}

/* A log site: the source file as the build names it and the line. */
struct Site {
    const char* file;
    int line;
};

}  // namespace util_db

#define UTIL_DB_HERE (::util_db::Site{__FILE__, __LINE__})

/* Logs one record; the arguments are not evaluated when it would not be logged. */
#define UTIL_DB_LOG(level, ...)                                                  \
    do {                                                                         \
        if (::util_db::log_enabled(level)) {                                     \
            ::util_db::log_write((level), __FILE__, __LINE__, __VA_ARGS__);      \
        }                                                                        \
    } while (0)

/* The same on behalf of another site (a helper logging for its caller). */
#define UTIL_DB_LOG_AT(site, level, ...)                                         \
    do {                                                                         \
        if (::util_db::log_enabled(level)) {                                     \
            ::util_db::log_write((level), (site).file, (site).line, __VA_ARGS__);\
        }                                                                        \
    } while (0)

#endif /* __cplusplus && UTIL_DB_INTERNAL */

#endif /* UTIL_DB_LOG_H */
