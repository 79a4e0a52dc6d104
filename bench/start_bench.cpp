#include "bench/firstpaint.h"
#include "shell/NacelleBench.h"

int main(int argc, char *argv[])
{
    return showUntilPainted<NacelleBench>(argc, argv);
}
