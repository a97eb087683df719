#include "nimbet_db.h"
int main(void) { return 0; }
