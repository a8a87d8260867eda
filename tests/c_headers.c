/* Every public header compiles as C, and a C program links and runs against
 * the shared library. */
#include "util-database.h"

#include <stdio.h>
#include <string.h>

int main(void) {
    db_handle_t handle;
    memset(&handle, 0, sizeof handle);
    if (util_db_init(&handle) != &handle) {
        fprintf(stderr, "util_db_init failed\n");
        return 1;
    }
    if (util_db_deinit(&handle) != 0 || handle.conn != NULL || handle.mutex != NULL) {
        fprintf(stderr, "util_db_deinit failed\n");
        return 1;
    }
    return util_db_log_switch == 0 && util_db_log_level == 0 ? 0 : 1;
}
