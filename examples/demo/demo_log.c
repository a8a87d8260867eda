/* The demo shows the library's log on the terminal: it provides the system-log
 * functions itself, so the library's records (identity "Util-db") are printed
 * on standard error instead of going to syslog. */
#include <stdarg.h>
#include <stdio.h>
#include <string.h>
#include <syslog.h>

static const char* demo_ident = "";

void openlog(const char* ident, int option, int facility) {
    (void)option;
    (void)facility;
    demo_ident = ident ? ident : "";
}

void closelog(void) { demo_ident = ""; }

void vsyslog(int priority, const char* fmt, va_list ap) {
    char text[4096];
    vsnprintf(text, sizeof text, fmt, ap);
    size_t len = strlen(text);
    if (len > 0 && text[len - 1] == '\n') {
        text[--len] = '\0';
    }
    fprintf(stderr, "  [%s %d] %s\n", demo_ident, priority, text);
}

void syslog(int priority, const char* fmt, ...) {
    va_list ap;
    va_start(ap, fmt);
    vsyslog(priority, fmt, ap);
    va_end(ap);
}

void __syslog_chk(int priority, int flag, const char* fmt, ...) {
    va_list ap;
    (void)flag;
    va_start(ap, fmt);
    vsyslog(priority, fmt, ap);
    va_end(ap);
}
