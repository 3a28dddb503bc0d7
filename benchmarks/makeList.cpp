// make_list FILES: prints the paths of the campaign's first FILES files in byte order, a line each.

#include <algorithm>
#include <cstdlib>
#include <iostream>
#include <string>
#include <vector>

#include "benchmarks/Campaign.h"

int main(int argc, char** argv)
{
    if (argc != 2) {
        std::cerr << "usage: make_list FILES\n";
        return 2;
    }
    std::vector<std::string> paths = campaign::paths(std::strtoull(argv[1], nullptr, 10));
    std::sort(paths.begin(), paths.end());
    for (const std::string& path : paths)
        std::cout << path << '\n';
    return std::cout.flush() ? 0 : 1;
}
