#include "cli/Application.h"

int main(int argc, char **argv)
{
    return Application::run(argc, argv);
}
