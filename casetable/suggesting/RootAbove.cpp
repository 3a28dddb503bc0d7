#include "casetable/suggesting/RootAbove.h"

#include <cstdlib>
#include <memory>
#include <string_view>
#include <utility>

#include <sys/stat.h>
#include <unistd.h>

namespace casetable {

namespace {

std::string withoutSlashesAtTheEnd(std::string path)
{
    while (!path.empty() && path.back() == '/')
        path.pop_back();
    return path;
}

std::string lastName(const std::string& path)
{
    return path.substr(path.rfind('/') + 1);
}

// Empty for "/" and where there is no such folder any more.
std::string realName(const std::string& path)
{
    const std::unique_ptr<char, decltype(&std::free)> real(::realpath(path.c_str(), nullptr),
                                                           &std::free);
    return real ? lastName(real.get()) : std::string();
}

bool isLink(const std::string& path)
{
    struct stat status {};
    return ::lstat(path.c_str(), &status) == 0 && S_ISLNK(status.st_mode);
}

std::string escapedForGlob(const std::string& name)
{
    std::string escaped;
    for (const char c : name) {
        if (std::string_view("*?[]\\").find(c) != std::string_view::npos)
            escaped += '\\';
        escaped += c;
    }
    return escaped;
}

// Stands below the folder above for what `glob` stands for below its folder `name`.
Glob below(const std::string& name, const Glob& glob)
{
    if (!glob.needsPath())
        return glob;
    const std::string& text = glob.text();
    return Glob('/' + escapedForGlob(name) + (text.front() == '/' ? "" : "/") + text);
}

} // namespace

std::optional<RootAbove> rootAbove(const Options& options)
{
    const std::string root = withoutSlashesAtTheEnd(options.source.root);
    RootAbove above{options, lastName(root)};
    if (root == ".") {
        above.options.source.root = "..";
        above.name = realName(root);
    } else if (above.name == "." || above.name == ".." || isLink(root)) {
        // A link cannot be walked from above without all others being followed too.
        above.options.source.root = root + "/..";
        above.name = realName(root);
    } else {
        const std::string path = root.substr(0, root.size() - above.name.size());
        above.options.source.root = withoutSlashesAtTheEnd(path);
        if (above.options.source.root.empty())
            above.options.source.root = path.empty() ? "." : "/";
    }
    if (above.name.empty() || ::access(above.options.source.root.c_str(), R_OK | X_OK) != 0)
        return std::nullopt;

    // That nobody may read what stands beside is no reason to fail.
    above.options.source.keepGoing = true;
    Selection& selection = above.options.source.selection;
    if (selection.maxDepth != Selection().maxDepth)
        ++selection.maxDepth;
    for (Glob& glob : selection.excluded)
        glob = below(above.name, glob);
    if (selection.judge(above.name, 1, true) != Selection::Verdict::Taken)
        return std::nullopt;
    return above;
}

} // namespace casetable
