#include "app/StartUp.h"

int StartUp::run(int, char **)
{
    return 0;
}
