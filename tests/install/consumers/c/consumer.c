#include <JobParser/ParseJobInfo.h>
#include <stdio.h>

int main(int argc, char** argv)
{
    return argc == 2 && puts(ParseJobInfo(argv[1])) >= 0 ? 0 : 1;
}
