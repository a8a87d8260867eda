#include "demo.h"

int demo_device(db_handle_t* h) {
    (void)h;
    return 0;
}
