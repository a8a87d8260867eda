#include "demo.h"

int demo_services(db_handle_t* h) {
    (void)h;
    return 0;
}
