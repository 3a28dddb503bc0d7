#ifndef TESTS_CRAWLER_PARSERMODEL_H
#define TESTS_CRAWLER_PARSERMODEL_H

#include <algorithm>
#include <cstddef>
#include <memory>
#include <string>
#include <vector>

#include <boost/shared_ptr.hpp>

#include "crawler/MetadataPattern.h"
#include "host/AuxFileInfoInterface.h"
#include "tests/crawler/PlainMatching.h"

/// How files become cases, said once more without any cleverness: lists that are searched from end
/// to end.
namespace model {

/// A path, with the record that the parser showed for it.
struct File {
    plain::Record record;
    boost::shared_ptr<AuxFileInfoInterface> shown;
};

struct Parser {
    std::vector<std::shared_ptr<File>> files;
    std::vector<std::vector<std::string>> cases;

    static bool comesBefore(const std::string& left, const std::string& right)
    {
        for (std::size_t i = 0; i < left.size() && i < right.size(); ++i) {
            const auto leftByte = static_cast<unsigned char>(left[i]);
            const auto rightByte = static_cast<unsigned char>(right[i]);
            if (leftByte != rightByte)
                return leftByte < rightByte;
        }
        return left.size() < right.size();
    }

    void append(const std::string& path)
    {
        const auto fresh = std::make_shared<File>();
        fresh->record.path = path;
        std::size_t at = 0;
        while (at < files.size() && comesBefore(files[at]->record.path, path))
            ++at;
        if (at < files.size() && files[at]->record.path == path)
            files[at] = fresh;
        else
            files.insert(files.begin() + static_cast<std::ptrdiff_t>(at), fresh);
    }

    /// Throws as plain::apply does; the cases built so far stay.
    void apply(const std::vector<MetadataPattern>& patterns)
    {
        for (const auto& file : files)
            file->record.infos.clear();
        cases.clear();
        if (patterns.empty())
            return;
        for (const auto& file : files) {
            if (!plain::apply(file->record, patterns))
                continue;
            const auto known = std::find(cases.begin(), cases.end(), file->record.values);
            file->record.caseIndex = static_cast<std::size_t>(known - cases.begin());
            if (known == cases.end())
                cases.push_back(file->record.values);
        }
    }
};

} // namespace model

#endif
