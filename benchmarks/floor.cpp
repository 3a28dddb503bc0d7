// floor ROOT MARKER...: the least that an import of number markers costs, for comparison: raw
// directory reads, substring search, one hash map and one sort of the cases, without any object
// model. Prints the seconds of each stage and what it found.
//
// The table is the list of the cases' values in the order of the cases' first paths, the same
// numbering as the module's.

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <iostream>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include <dirent.h>
#include <fcntl.h>
#include <sys/resource.h>
#include <unistd.h>

namespace {

using Clock = std::chrono::steady_clock;

double secondsSince(Clock::time_point start)
{
    return std::chrono::duration<double>(Clock::now() - start).count();
}

[[noreturn]] void fail(const std::string& path)
{
    std::perror(("floor: " + path).c_str());
    std::exit(1);
}

// The files' paths, one after the other in one buffer.
struct Files {
    std::string text;
    std::vector<std::size_t> ends;

    std::string_view operator[](std::size_t index) const
    {
        const std::size_t begin = index == 0 ? 0 : ends[index - 1];
        return std::string_view(text).substr(begin, ends[index] - begin);
    }
};

// `path` is the folder's path below the root with a trailing separator, or empty; used as scratch.
void walk(int folder, std::string& path, Files& files)
{
    std::vector<std::string> subfolders;
    alignas(dirent64) char buffer[32 * 1024];
    for (;;) {
        const ssize_t size = ::getdents64(folder, buffer, sizeof buffer);
        if (size < 0)
            fail(path);
        if (size == 0)
            break;
        for (ssize_t offset = 0; offset < size;) {
            const auto* entry = reinterpret_cast<const dirent64*>(buffer + offset);
            offset += entry->d_reclen;
            if (entry->d_type == DT_REG) {
                files.text.append(path).append(entry->d_name);
                files.ends.push_back(files.text.size());
            } else if (entry->d_type == DT_DIR && std::strcmp(entry->d_name, ".") != 0 &&
                       std::strcmp(entry->d_name, "..") != 0) {
                subfolders.emplace_back(entry->d_name);
            }
        }
    }
    const std::size_t length = path.size();
    for (const std::string& name : subfolders) {
        const int subfolder = ::openat(folder, name.c_str(), O_RDONLY | O_DIRECTORY | O_CLOEXEC);
        if (subfolder < 0)
            fail(path + name);
        path.append(name).push_back('/');
        walk(subfolder, path, files);
        path.resize(length);
        ::close(subfolder);
    }
}

bool isDigit(char c)
{
    return c >= '0' && c <= '9';
}

std::size_t skipDigits(std::string_view text, std::size_t index)
{
    while (index < text.size() && isDigit(text[index]))
        ++index;
    return index;
}

// The number that `text` begins with; empty when there is none.
std::string_view numberAt(std::string_view text)
{
    const auto at = [text](std::size_t index) { return index < text.size() ? text[index] : '\0'; };
    const std::size_t sign = at(0) == '-' || at(0) == '+' ? 1 : 0;
    std::size_t end = skipDigits(text, sign);
    const bool hasWholePart = end > sign;
    if (at(end) == '.' && (hasWholePart || isDigit(at(end + 1))))
        end = skipDigits(text, end + 1);
    else if (!hasWholePart)
        return std::string_view();
    if (at(end) != '\0' && std::strchr("DEde", at(end)) != nullptr) {
        const std::size_t digits = at(end + 1) == '-' || at(end + 1) == '+' ? end + 2 : end + 1;
        if (isDigit(at(digits)))
            end = skipDigits(text, digits);
    }
    return text.substr(0, text[end - 1] == '.' ? end - 1 : end);
}

// Joins the values behind the markers, each followed by a NUL, in `key`.
bool match(std::string_view path, const std::vector<std::string_view>& markers, std::string& key)
{
    key.clear();
    std::size_t position = path.find(markers.front());
    for (std::size_t k = 0; k < markers.size(); ++k) {
        if (position == std::string_view::npos)
            return false;
        const std::size_t begin = position + markers[k].size();
        const std::size_t next =
            k + 1 < markers.size() ? path.find(markers[k + 1], position + 1) : path.size();
        if (next != std::string_view::npos && next < begin)
            return false;
        const std::string_view value = numberAt(path.substr(begin, next - begin));
        if (value.empty())
            return false;
        key.append(value).push_back('\0');
        position = next;
    }
    return true;
}

struct Case {
    std::size_t firstFile;
    std::vector<std::size_t> files;
    std::string key;
};

std::vector<Case> group(const Files& files, const std::vector<std::string_view>& markers)
{
    std::vector<Case> cases;
    std::unordered_map<std::string, std::size_t> caseOf;
    std::string key;
    for (std::size_t i = 0; i < files.ends.size(); ++i) {
        if (!match(files[i], markers, key))
            continue;
        const auto [entry, isNew] = caseOf.try_emplace(key, cases.size());
        if (isNew)
            cases.push_back({i, {}, key});
        Case& owner = cases[entry->second];
        owner.files.push_back(i);
        if (files[i] < files[owner.firstFile])
            owner.firstFile = i;
    }
    std::sort(cases.begin(), cases.end(), [&files](const Case& left, const Case& right) {
        return files[left.firstFile] < files[right.firstFile];
    });
    return cases;
}

std::vector<std::vector<std::string>> makeTable(const std::vector<Case>& cases,
                                                std::size_t columnCount)
{
    std::vector<std::vector<std::string>> columns(columnCount);
    for (auto& column : columns)
        column.reserve(cases.size());
    for (const Case& each : cases) {
        const char* value = each.key.c_str();
        for (auto& column : columns) {
            column.emplace_back(value);
            value += column.back().size() + 1;
        }
    }
    return columns;
}

} // namespace

int main(int argc, char** argv)
{
    if (argc < 3) {
        std::cerr << "usage: floor ROOT MARKER...\n";
        return 2;
    }
    const std::vector<std::string_view> markers(argv + 2, argv + argc);

    const Clock::time_point start = Clock::now();
    const int root = ::open(argv[1], O_RDONLY | O_DIRECTORY | O_CLOEXEC);
    if (root < 0)
        fail(argv[1]);
    Files files;
    std::string path;
    walk(root, path, files);
    ::close(root);
    const double walked = secondsSince(start);
    const std::vector<Case> cases = group(files, markers);
    const double grouped = secondsSince(start);
    const auto table = makeTable(cases, markers.size());
    const double imported = secondsSince(start);

    rusage usage = {};
    ::getrusage(RUSAGE_SELF, &usage);
    std::printf("walk %.6f\nmatch %.6f\ntable %.6f\nimport %.6f\n", walked, grouped - walked,
                imported - grouped, imported);
    std::printf("files %zu\ncases %zu\npeak_kib %ld\n", files.ends.size(), table.front().size(),
                usage.ru_maxrss);
}
