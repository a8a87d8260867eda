/*
 * util-db-accessor.h - the internal toolkit of the table modules (not
 * installed).
 *
 * A table function keeps its statement literals, its argument checks and its
 * column mapping; the toolkit carries the mechanics: the bounded statement
 * buffer, the result-set guard, running a statement, the row messages and the
 * recurring look-up shapes, and the table dump.
 */
#ifndef UTIL_DB_ACCESSOR_H
#define UTIL_DB_ACCESSOR_H

#ifndef UTIL_DB_INTERNAL
#define UTIL_DB_INTERNAL 1
#endif

#include <stdarg.h>
#include <stddef.h>
#include <stdio.h>
#include <string.h>

#include "util-db-common.h"
#include "util-db-internal.h"
#include "util-db-log.h"

namespace util_db {

/*
 * Formats into a caller's fixed buffer with snprintf semantics.
 *
 * format() writes the whole buffer from its start; append() writes at the
 * cursor with the room left as its bound and advances the cursor by the length
 * the formatter reports, so a cut piece leaves the cursor at or past the end.
 * Once the cursor has reached the end, further pieces write nothing.
 */
class Appender {
public:
    Appender(char* buf, size_t capacity, size_t cursor = 0) : buf_(buf), cap_(capacity), cursor_(cursor) {}

    int format(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        cursor_ = 0;
        const int n = put(fmt, ap);
        va_end(ap);
        return n;
    }

    int append(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        const int n = put(fmt, ap);
        va_end(ap);
        return n;
    }

    int vappend(const char* fmt, va_list ap) __attribute__((format(printf, 2, 0))) { return put(fmt, ap); }

    /* A constant piece, with append's cut and cursor rules, without the formatter. */
    void text(const char* piece) {
        const size_t n = strlen(piece);
        if (cursor_ < cap_) {
            const size_t room = cap_ - cursor_ - 1;
            const size_t copied = n < room ? n : room;
            memcpy(buf_ + cursor_, piece, copied);
            buf_[cursor_ + copied] = '\0';
            cursor_ += n;
        }
    }

    size_t cursor() const { return cursor_; }
    bool cut() const { return cursor_ >= cap_; }

private:
    int put(const char* fmt, va_list ap) __attribute__((format(printf, 2, 0))) {
        if (cursor_ >= cap_) {
            return 0;
        }
        const int n = vsnprintf(buf_ + cursor_, cap_ - cursor_, fmt, ap);
        if (n > 0) {
            cursor_ += static_cast<size_t>(n);
        }
        return n;
    }

    char* buf_;
    size_t cap_;
    size_t cursor_;
};

/* A statement buffer of N bytes (1024 for every table function). */
template <size_t N>
class BasicStatement {
public:
    static constexpr size_t kSize = N;

    /* An empty statement. Only the terminator is written: every piece keeps
     * the text terminated, and nothing past it is ever read or sent. */
    BasicStatement() : out_(buf_, N) { buf_[0] = '\0'; }
    BasicStatement(const BasicStatement&) = delete;
    BasicStatement& operator=(const BasicStatement&) = delete;

    /* snprintf(buf, N, fmt, ...) over the whole buffer. */
    int format(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        const int n = vsnprintf(buf_, N, fmt, ap);
        va_end(ap);
        out_ = Appender(buf_, N, n > 0 ? static_cast<size_t>(n) : 0);
        return n;
    }

    /* The next piece at the cursor, bounded by the room left. */
    int append(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        const int n = out_.vappend(fmt, ap);
        va_end(ap);
        return n;
    }

    void clear() {
        buf_[0] = '\0';
        out_ = Appender(buf_, N);
    }

    /* A constant piece: as append("%s", text), without the formatter. */
    void text(const char* piece) { out_.text(piece); }

    const char* c_str() const { return buf_; }
    char* data() { return buf_; }
    bool empty() const { return buf_[0] == '\0'; }
    size_t cursor() const { return out_.cursor(); }

private:
    char buf_[N];
    Appender out_;
};

using Statement = BasicStatement<1024>;

/* Owns a result set: frees it on every path unless released. */
class Result {
public:
    Result() : res_(nullptr) {}
    explicit Result(void* res) : res_(static_cast<MYSQL_RES*>(res)) {}
    ~Result() { reset(); }
    Result(Result&& other) noexcept : res_(other.res_) { other.res_ = nullptr; }
    Result& operator=(Result&& other) noexcept {
        if (this != &other) {
            reset();
            res_ = other.res_;
            other.res_ = nullptr;
        }
        return *this;
    }
    Result(const Result&) = delete;
    Result& operator=(const Result&) = delete;

    explicit operator bool() const { return res_ != nullptr; }
    MYSQL_RES* get() const { return res_; }

    /* Row count as the client reports it, and taken as a signed 32-bit value. */
    my_ulonglong rows() const { return mysql_num_rows(res_); }
    int rows_int() const { return static_cast<int>(mysql_num_rows(res_)); }
    unsigned int fields() const { return mysql_num_fields(res_); }
    MYSQL_ROW fetch() { return mysql_fetch_row(res_); }

    /* Frees the result set now (nothing when there is none). */
    void reset() {
        if (res_ != nullptr) {
            mysql_free_result(res_);
            res_ = nullptr;
        }
    }

    /* Gives the result set up without freeing it. */
    MYSQL_RES* release() {
        MYSQL_RES* res = res_;
        res_ = nullptr;
        return res;
    }

private:
    MYSQL_RES* res_;
};

/* Runs a statement without rows: 0 when db_query succeeds, else -1. */
inline int run(db_handle_t* handle, const char* sql) {
    return db_query(handle, sql) == 0 ? 0 : -1;
}

/* Formats a statement into a fresh 1024-byte buffer (cut silently when longer)
 * and runs it without rows: 0, or -1. */
int run_format(db_handle_t* handle, const char* fmt, ...) __attribute__((format(printf, 2, 3)));

/* A text value as the formatter spells a NULL one, "(null)": functions that
 * do not check a text argument pass it through this instead of handing NULL
 * to %s. */
inline const char* text_or_null(const char* s) { return s != nullptr ? s : "(null)"; }

/* Runs a statement with rows; the result is empty (false) on failure. */
inline Result store(db_handle_t* handle, const char* sql) {
    return Result(db_store_result(handle, sql));
}

/* The two row messages of a function, logged at priority 3. */
struct RowMessages {
    const char* empty; /* no row */
    const char* fetch; /* no first row (or no value, see first_row) */
};

/* The plain pair, without step number or line feed. */
constexpr RowMessages kRowMessages = {"mysql_num_rows(), data is empty or error!",
                                      "mysql_fetch_row() exec error!"};

/* What first_row asks of the row it returns. */
enum class Need {
    Row,   /* a row is enough */
    Value, /* the first cell must not be SQL NULL either (else the fetch message) */
};

/* Logs one fixed message text at priority 3. */
inline void log_error(const char* text) { UTIL_DB_LOG(3, "%s", text); }

/* Logs "mysql cmd: %s\n" for the statement on behalf of the caller's site. */
inline void log_statement(Site site, int priority, const char* sql) {
    UTIL_DB_LOG_AT(site, priority, "mysql cmd: %s\n", sql);
}

/*
 * Runs a look-up and returns its first row, or NULL: no result set (nothing
 * logged here), no row (msgs.empty), no first row or, with Need::Value, a NULL
 * first cell (msgs.fetch). On NULL the result set is already freed.
 */
MYSQL_ROW first_row(db_handle_t* handle, const char* sql, Result& res, const RowMessages& msgs,
                    Need need = Need::Row);

/* atoi of the first cell of the first row, or -1 (first_row's failures). */
int lookup_int(db_handle_t* handle, const char* sql, const RowMessages& msgs = kRowMessages);

/* Copies the first cell of the first row into out, whole and without a bound;
 * returns out, or NULL leaving out untouched (first_row's failures, and
 * without a message an SQL NULL cell or a NULL out). */
char* lookup_string(db_handle_t* handle, const char* sql, char* out, const RowMessages& msgs,
                    Need need = Need::Row);

/*
 * Logs a whole table: "select * from " followed by the table name (no
 * semicolon); the row and field totals, then one record per cell ("%s\t") and
 * one "\n" per row, all at `priority` on behalf of `site`. 0, or -1 when the
 * handle is NULL or the statement fails.
 */
int dump_table(db_handle_t* handle, const char* table, int priority, Site site);

/* Bounded copy of exactly `capacity` characters (strncpy: no terminator when
 * the value fills the capacity). */
inline void copy_bounded(char* dst, const char* src, size_t capacity) {
    const size_t n = strnlen(src, capacity);
    memcpy(dst, src, n);
    if (n < capacity) {
        memset(dst + n, 0, capacity - n);
    }
}

/* A fresh heap buffer of `capacity` bytes holding the bounded copy of src, or
 * NULL when memory runs out. */
char* heap_copy(const char* src, size_t capacity);

}  // namespace util_db

#endif /* UTIL_DB_ACCESSOR_H */
