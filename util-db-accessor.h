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
    void text(const char* piece) { write(piece, strlen(piece)); }

    /* The first n characters of piece, as text() writes a piece. */
    void write(const char* piece, size_t n) {
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

#ifdef UTIL_DB_SAFE
constexpr bool kSafeProfile = true;
#else
constexpr bool kSafeProfile = false;
#endif

/* The largest statement buffer. */
constexpr size_t kMaxStatementSize = 2048;

/*
 * A statement under construction in a fixed buffer, bound to the handle it
 * will run on.
 *
 * Default profile: snprintf semantics (format() over the whole buffer,
 * append() and text() at the cursor, an over-long statement is cut) and the
 * values go in as they are.
 *
 * Safe profile: the same text for clean values, and three refusals. Every %s
 * value that the literal text places between single quotes is escaped for the
 * handle's connection (inside a like pattern, % and _ also match literally); a
 * value passed through literal() must be one SQL literal; a statement that
 * does not fit is not cut. A refused statement is never sent: run, store,
 * first_row and the look-ups fail for it at once.
 */
class StatementBase {
public:
    StatementBase(const StatementBase&) = delete;
    StatementBase& operator=(const StatementBase&) = delete;

    /* snprintf(buf, size, fmt, ...) over the whole buffer. */
    int format(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        const int n = vformat(fmt, ap);
        va_end(ap);
        return n;
    }
    int vformat(const char* fmt, va_list ap) __attribute__((format(printf, 2, 0)));

    /* The next piece at the cursor, bounded by the room left. */
    int append(const char* fmt, ...) __attribute__((format(printf, 2, 3))) {
        va_list ap;
        va_start(ap, fmt);
        const int n = vappend(fmt, ap);
        va_end(ap);
        return n;
    }
    int vappend(const char* fmt, va_list ap) __attribute__((format(printf, 2, 0)));

    /* A constant piece: as append("%s", text), without the formatter. */
    void text(const char* piece);

    void clear();

    /* A value that the statement places without quotes, given by the caller
     * as SQL text. Safe profile: unless it is one literal (a number, or one
     * quoted string), the statement is refused and the refusal logged. */
    const char* literal(const char* value) {
        if (kSafeProfile) {
            check_literal(value);
        }
        return value;
    }

    /* A column name that the statement places as it is, given by the caller.
     * Safe profile: unless it is one plain name (letters, digits and _, not
     * starting with a digit), the statement is refused and the refusal
     * logged. Call it after format(), which starts the statement afresh. */
    void identifier(const char* name) {
        if (kSafeProfile) {
            check_identifier(name);
        }
    }

    const char* c_str() const { return buf_; }
    bool empty() const { return buf_[0] == '\0'; }
    size_t cursor() const { return out_.cursor(); }
    db_handle_t* handle() const { return handle_; }

    /* Safe profile: whether the statement must not be sent; refuse_logged()
     * says why on the log when the reason was not logged yet. */
    bool refused() const { return kSafeProfile && refusal_ != Refusal::None; }
    void refuse_logged() const;

protected:
    StatementBase(char* buf, size_t capacity, db_handle_t* handle, StatementBase* owner, bool bound = true)
        : buf_(buf), cap_(capacity), handle_(handle), owner_(owner), out_(buf, capacity), bound_(bound) {
        buf_[0] = '\0';
    }

private:
    enum class Refusal { None, TooLong, Logged };

    void refuse(Refusal why);
    void check_literal(const char* value);
    void check_identifier(const char* name);
    void reset_state();
#ifdef UTIL_DB_SAFE
    int put(const char* fmt, va_list ap);
    void put_text(const char* s, size_t n);
    void put_value(const char* value);
    void put_int(int value);
    bool like_pattern_opens() const;
#endif

    char* buf_;
    size_t cap_;
    db_handle_t* handle_;
    StatementBase* owner_;
    Appender out_;
    bool bound_;          /* made for a handle (else for no statement that is sent) */
    Refusal refusal_ = Refusal::None;
    bool quoted_ = false; /* the literal text so far leaves a quote open */
    bool like_ = false;   /* ... and that quote opened a like pattern */
};

template <size_t N>
struct StatementStorage {
    char storage_[N];
};

/* A statement buffer of N bytes (1024 for every table function). */
template <size_t N>
class BasicStatement : private StatementStorage<N>, public StatementBase {
public:
    static constexpr size_t kSize = N;
    static_assert(N <= kMaxStatementSize, "the safe profile escapes values up to kMaxStatementSize");

    /* An empty statement that will run on `handle`. Only the terminator is
     * written: every piece keeps the text terminated, and nothing past it is
     * ever read or sent. */
    explicit BasicStatement(db_handle_t* handle)
        : StatementBase(StatementStorage<N>::storage_, N, handle, nullptr) {}
    /* A statement bound to no handle: the safe profile refuses any quoted
     * value in it that would need escaping. */
    BasicStatement() : StatementBase(StatementStorage<N>::storage_, N, nullptr, nullptr, false) {}
    /* A part of `owner` (formatted on its own, then placed into the owner as
     * the library's own text): it shares the owner's handle, and a refusal of
     * the part refuses the owner. */
    template <size_t M>
    explicit BasicStatement(BasicStatement<M>& owner)
        : StatementBase(StatementStorage<N>::storage_, N, owner.handle(), &owner) {}
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

    /* The result set that a function has always left unfreed on one path:
     * given up as it is in the default profile, freed in the safe one. */
    void abandon() {
        if (kSafeProfile) {
            reset();
        } else {
            release();
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

/* Whether a statement may be sent; a refused one is logged and is not. */
inline bool sendable(const StatementBase& sql) {
    if (sql.refused()) {
        sql.refuse_logged();
        return false;
    }
    return true;
}

/* run, for a statement built in a StatementBase: -1 when it is refused. */
inline int run(db_handle_t* handle, const StatementBase& sql) {
    return sendable(sql) ? run(handle, sql.c_str()) : -1;
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

/* store, for a statement built in a StatementBase: empty when it is refused. */
inline Result store(db_handle_t* handle, const StatementBase& sql) {
    return sendable(sql) ? store(handle, sql.c_str()) : Result();
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

inline MYSQL_ROW first_row(db_handle_t* handle, const StatementBase& sql, Result& res, const RowMessages& msgs,
                           Need need = Need::Row) {
    if (!sendable(sql)) {
        res.reset();
        return NULL;
    }
    return first_row(handle, sql.c_str(), res, msgs, need);
}

/* atoi of the first cell of the first row, or -1 (first_row's failures). */
int lookup_int(db_handle_t* handle, const char* sql, const RowMessages& msgs = kRowMessages);
inline int lookup_int(db_handle_t* handle, const StatementBase& sql, const RowMessages& msgs = kRowMessages) {
    return sendable(sql) ? lookup_int(handle, sql.c_str(), msgs) : -1;
}

/* Copies the first cell of the first row into out, whole and without a bound;
 * returns out, or NULL leaving out untouched (first_row's failures, and
 * without a message an SQL NULL cell or a NULL out). */
char* lookup_string(db_handle_t* handle, const char* sql, char* out, const RowMessages& msgs,
                    Need need = Need::Row);
inline char* lookup_string(db_handle_t* handle, const StatementBase& sql, char* out, const RowMessages& msgs,
                           Need need = Need::Row) {
    return sendable(sql) ? lookup_string(handle, sql.c_str(), out, msgs, need) : NULL;
}

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

/* A list record that a failed list read never linked: left allocated (with
 * what it holds) in the default profile, freed with the list's own free
 * function in the safe one. */
template <typename Rec, typename Free>
inline void drop_unlinked(Rec* rec, Free free_list) {
    if (kSafeProfile && rec != NULL) {
        rec->next = NULL;
        free_list(rec);
    }
}

/* A fresh heap buffer of `capacity` bytes holding the bounded copy of src, or
 * NULL when memory runs out. */
char* heap_copy(const char* src, size_t capacity);

}  // namespace util_db

#endif /* UTIL_DB_ACCESSOR_H */
