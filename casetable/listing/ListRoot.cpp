#include "casetable/listing/ListRoot.h"

#include <utility>
#include <vector>

#include <boost/make_shared.hpp>

namespace casetable {

namespace {

class ListRoot : public FileInfoInterface {
public:
    explicit ListRoot(std::string name) : name_(std::move(name)) {}

    bool isDirectory() const override { return true; }
    bool isReadable() const override { return true; }
    bool isFile() const override { return false; }
    bool exists() const override { return true; }
    std::string fullPath() const override { return name_; }
    std::string fileName() const override { return name_; }

    std::vector<boost::shared_ptr<FileInfoInterface const>>
    entries(const std::string& /*filter*/) const override
    {
        return {};
    }

private:
    const std::string name_;
};

} // namespace

boost::shared_ptr<FileInfoInterface const> listRoot(std::string name)
{
    return boost::make_shared<ListRoot>(std::move(name));
}

} // namespace casetable
