#include "bench/firstpaint.h"

int main(int argc, char *argv[])
{
    return showUntilPainted<QMainWindow>(argc, argv);
}
