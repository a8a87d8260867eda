#include "util-db-accessor.h"

#include <stdlib.h>

namespace util_db {

/* ---- Statements ---- */

void StatementBase::reset_state() {
    refusal_ = Refusal::None;
    quoted_ = false;
    like_ = false;
}

void StatementBase::clear() {
    buf_[0] = '\0';
    out_ = Appender(buf_, cap_);
    reset_state();
}

void StatementBase::refuse(Refusal why) {
    if (refusal_ == Refusal::None) {
        refusal_ = why;
    }
    if (owner_ != nullptr) {
        owner_->refuse(why);
    }
}

void StatementBase::refuse_logged() const {
    if (refusal_ == Refusal::TooLong) {
        UTIL_DB_LOG(3, "Statement too long for its buffer, not sent\n");
    }
}

#ifndef UTIL_DB_SAFE

int StatementBase::vformat(const char* fmt, va_list ap) {
    const int n = vsnprintf(buf_, cap_, fmt, ap);
    out_ = Appender(buf_, cap_, n > 0 ? static_cast<size_t>(n) : 0);
    return n;
}

int StatementBase::vappend(const char* fmt, va_list ap) { return out_.vappend(fmt, ap); }

void StatementBase::text(const char* piece) { out_.text(piece); }

void StatementBase::check_literal(const char*) {}

void StatementBase::check_identifier(const char*) {}

#else

namespace {

bool is_word_char(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_';
}

bool is_digit(char c) { return c >= '0' && c <= '9'; }

/* Skips a run of digits; whether there was one. */
bool digits(const char*& p) {
    const char* start = p;
    while (is_digit(*p)) {
        ++p;
    }
    return p != start;
}

/* A decimal number: [+-] digits [. digits] or [+-] . digits, then an
 * optional exponent. */
bool is_number(const char* p) {
    if (*p == '+' || *p == '-') {
        ++p;
    }
    bool whole = digits(p);
    if (*p == '.') {
        ++p;
        whole = digits(p) || whole;
    }
    if (!whole) {
        return false;
    }
    if (*p == 'e' || *p == 'E') {
        ++p;
        if (*p == '+' || *p == '-') {
            ++p;
        }
        if (!digits(p)) {
            return false;
        }
    }
    return *p == '\0';
}

/* One quoted string and nothing else, read as the server reads it: a quote
 * inside is doubled, and with backslash escapes a backslash takes the next
 * character with it. */
bool is_quoted_string(const char* s, size_t n, bool backslash_escapes) {
    if (n < 2 || s[0] != '\'' || s[n - 1] != '\'') {
        return false;
    }
    const size_t last = n - 1; /* the closing quote */
    size_t i = 1;
    while (i < last) {
        if (s[i] == '\\' && backslash_escapes) {
            i += 2;
        } else if (s[i] == '\'') {
            if (i + 1 >= last || s[i + 1] != '\'') {
                return false;
            }
            i += 2;
        } else {
            ++i;
        }
    }
    return i == last;
}

}  // namespace

int StatementBase::vformat(const char* fmt, va_list ap) {
    clear();
    return put(fmt, ap);
}

int StatementBase::vappend(const char* fmt, va_list ap) { return put(fmt, ap); }

void StatementBase::text(const char* piece) {
    put_text(piece, strlen(piece));
    if (out_.cut()) {
        refuse(Refusal::TooLong);
    }
}

/* The formatter of the safe profile: %d, %s and %% as printf writes them, %s
 * values between quotes escaped. Returns the length of the piece. */
int StatementBase::put(const char* fmt, va_list ap) {
    const size_t start = out_.cursor();
    const char* p = fmt;
    while (*p != '\0') {
        const char* pct = strchr(p, '%');
        if (pct == nullptr) {
            put_text(p, strlen(p));
            break;
        }
        put_text(p, static_cast<size_t>(pct - p));
        switch (pct[1]) {
            case 'd':
                put_int(va_arg(ap, int));
                break;
            case 's':
                put_value(va_arg(ap, const char*));
                break;
            case '%':
                out_.write("%", 1);
                break;
            default: /* no other conversion is used: refuse rather than guess */
                refuse(Refusal::Logged);
                return 0;
        }
        p = pct + 2;
    }
    if (out_.cut()) {
        refuse(Refusal::TooLong);
    }
    return static_cast<int>(out_.cursor() - start);
}

/* Literal text: written as it is, each quote noting whether a value that
 * follows sits inside quotes, and whether those open a like pattern. */
void StatementBase::put_text(const char* s, size_t n) {
    const char* end = s + n;
    while (s < end) {
        const char* quote = static_cast<const char*>(memchr(s, '\'', static_cast<size_t>(end - s)));
        if (quote == nullptr) {
            out_.write(s, static_cast<size_t>(end - s));
            return;
        }
        out_.write(s, static_cast<size_t>(quote - s));
        quoted_ = !quoted_;
        like_ = quoted_ && like_pattern_opens();
        out_.write(quote, 1);
        s = quote + 1;
    }
}

/* %d as printf writes it. */
void StatementBase::put_int(int value) {
    char text[12];
    char* p = text + sizeof text;
    unsigned int u = value < 0 ? 0u - static_cast<unsigned int>(value) : static_cast<unsigned int>(value);
    do {
        *--p = static_cast<char>('0' + u % 10);
        u /= 10;
    } while (u != 0);
    if (value < 0) {
        *--p = '-';
    }
    out_.write(p, static_cast<size_t>(text + sizeof text - p));
}

/* Whether the text so far ends with the keyword like (and blanks). */
bool StatementBase::like_pattern_opens() const {
    size_t i = out_.cursor() < cap_ ? out_.cursor() : cap_ - 1;
    while (i > 0 && buf_[i - 1] == ' ') {
        --i;
    }
    if (i < 4 || (i > 4 && is_word_char(buf_[i - 5]))) {
        return false;
    }
    const char* w = buf_ + i - 4;
    return (w[0] | 0x20) == 'l' && (w[1] | 0x20) == 'i' && (w[2] | 0x20) == 'k' && (w[3] | 0x20) == 'e';
}

/* A %s value: as it is outside quotes; inside quotes escaped for the
 * connection when it holds a character that needs it. */
void StatementBase::put_value(const char* value) {
    if (value == nullptr) {
        value = "(null)"; /* as printf spells it */
    }
    const size_t n = strlen(value);
    if (!quoted_ || strpbrk(value, like_ ? "'\\%_" : "'\\") == nullptr) {
        out_.write(value, n);
        return;
    }
    if (n >= cap_) {
        refuse(Refusal::TooLong);
        return;
    }
    /* In a like pattern, % _ and the escape character itself first get the
     * pattern's escape (a backslash, whatever the server's mode); then the
     * whole is escaped as a string. */
    char pattern[2 * kMaxStatementSize];
    const char* from = value;
    size_t length = n;
    if (like_) {
        length = 0;
        for (const char* c = value; *c != '\0'; ++c) {
            if (*c == '%' || *c == '_' || *c == '\\') {
                pattern[length++] = '\\';
            }
            pattern[length++] = *c;
        }
        from = pattern;
    }
    char escaped[4 * kMaxStatementSize + 1];
    const long written = bound_ ? util_db_escape(handle_, escaped, from, length) : -1;
    if (written == -2) {
        /* No usable handle: nothing will be sent, the statement layer says why. */
        out_.write(value, n);
    } else if (written < 0) {
        refuse(Refusal::Logged); /* the failed connect is logged (or there is no handle) */
    } else {
        out_.write(escaped, static_cast<size_t>(written));
    }
}

void StatementBase::check_literal(const char* value) {
    const char* text = text_or_null(value);
    if (value != nullptr && is_number(value)) {
        return;
    }
    if (value != nullptr && value[0] == '\'') {
        /* The connection's own rule for a backslash: escaping one doubles it
         * unless the server runs with NO_BACKSLASH_ESCAPES. */
        char probe[3];
        const long n = util_db_escape(handle_, probe, "\\", 1);
        if (n == -1) {
            refuse(Refusal::Logged);
            return;
        }
        if (is_quoted_string(value, strlen(value), n != 1)) {
            return;
        }
    }
    UTIL_DB_LOG(3, "Value is not one SQL literal, not sent: %s\n", text);
    refuse(Refusal::Logged);
}

void StatementBase::check_identifier(const char* name) {
    const char* p = name;
    if (p != nullptr && *p != '\0' && !is_digit(*p)) {
        while (is_word_char(*p)) {
            ++p;
        }
        if (*p == '\0') {
            return;
        }
    }
    UTIL_DB_LOG(3, "Value is not one SQL identifier, not sent: %s\n", text_or_null(name));
    refuse(Refusal::Logged);
}

#endif

int run_format(db_handle_t* handle, const char* fmt, ...) {
    Statement sql(handle);
    va_list ap;
    va_start(ap, fmt);
    sql.vformat(fmt, ap);
    va_end(ap);
    return run(handle, sql);
}

MYSQL_ROW first_row(db_handle_t* handle, const char* sql, Result& res, const RowMessages& msgs, Need need) {
    res = store(handle, sql);
    if (!res) {
        return NULL;
    }
    if (res.rows() == 0) {
        log_error(msgs.empty);
        res.reset();
        return NULL;
    }
    MYSQL_ROW row = res.fetch();
    if (row == NULL || (need == Need::Value && row[0] == NULL)) {
        log_error(msgs.fetch);
        res.reset();
        return NULL;
    }
    return row;
}

int lookup_int(db_handle_t* handle, const char* sql, const RowMessages& msgs) {
    Result res;
    MYSQL_ROW row = first_row(handle, sql, res, msgs);
    if (row == NULL) {
        return -1;
    }
    return atoi(row[0]);
}

char* lookup_string(db_handle_t* handle, const char* sql, char* out, const RowMessages& msgs, Need need) {
    Result res;
    MYSQL_ROW row = first_row(handle, sql, res, msgs, need);
    if (row == NULL || row[0] == NULL || out == NULL) {
        return NULL; /* an SQL NULL or no buffer: nothing to copy into */
    }
    strcpy(out, row[0]);
    return out;
}

int dump_table(db_handle_t* handle, const char* table, int priority, Site site) {
    if (handle == NULL) {
        return -1;
    }
    Statement sql(handle);
    sql.format("select * from %s", table);
    Result res = store(handle, sql);
    if (!res) {
        return -1;
    }
    UTIL_DB_LOG_AT(site, priority, "The total rows is: %d\n", res.rows_int());
    const unsigned int fields = res.fields();
    UTIL_DB_LOG_AT(site, priority, "The total fields is: %d\n", static_cast<int>(fields));
    while (MYSQL_ROW row = res.fetch()) {
        for (unsigned int i = 0; i < fields; ++i) {
            UTIL_DB_LOG_AT(site, priority, "%s\t", row[i]);
        }
        UTIL_DB_LOG_AT(site, priority, "\n");
    }
    return 0;
}

char* heap_copy(const char* src, size_t capacity) {
    char* buf = static_cast<char*>(util_db_malloc(capacity));
    if (buf != NULL) {
        copy_bounded(buf, src, capacity);
    }
    return buf;
}

}  // namespace util_db
