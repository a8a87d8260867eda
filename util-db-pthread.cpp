#include "util-db-pthread.h"

#include <string.h>

#include "util-db-internal.h"
#include "util-db-log.h"

pthread_mutex_t* util_db_mutex_get(void) {
    pthread_mutex_t* mutex = static_cast<pthread_mutex_t*>(util_db_malloc(sizeof(pthread_mutex_t)));
    if (mutex == NULL) {
        UTIL_DB_LOG(3, "Fail to get data base mutex!\n");
        return NULL;
    }
    memset(mutex, 0, sizeof *mutex);
    return mutex;
}

int util_db_init_mutex(pthread_mutex_t* mutex) {
    pthread_mutexattr_t attr;
    pthread_mutexattr_init(&attr);
    pthread_mutexattr_settype(&attr, PTHREAD_MUTEX_RECURSIVE);
    int ret = pthread_mutex_init(mutex, &attr);
    pthread_mutexattr_destroy(&attr);
    return ret;
}
