// make_tree ROOT FILES: makes the campaign's first FILES files, empty, below the new folder ROOT.

#include <cstdlib>
#include <iostream>
#include <system_error>

#include "benchmarks/Campaign.h"

int main(int argc, char** argv)
{
    if (argc != 3) {
        std::cerr << "usage: make_tree ROOT FILES\n";
        return 2;
    }
    try {
        campaign::makeTree(argv[1], std::strtoull(argv[2], nullptr, 10));
    } catch (const std::system_error& failure) {
        std::cerr << "make_tree: " << failure.what() << '\n';
        return 1;
    }
}
