#include "tests/casetable/support/Csv.h"

#include <algorithm>
#include <stdexcept>

namespace casetable {
namespace tests {

namespace {

class Reader {
public:
    explicit Reader(const std::string& bytes) : bytes_(bytes) {}

    bool atEnd() const { return position_ == bytes_.size(); }

    bool take(const std::string& text)
    {
        if (bytes_.compare(position_, text.size(), text) != 0)
            return false;
        position_ += text.size();
        return true;
    }

    Record record()
    {
        Record fields = {field()};
        while (take(","))
            fields.push_back(field());
        return fields;
    }

private:
    std::string field()
    {
        if (take("\""))
            return quoted();
        const std::size_t end = std::min(bytes_.find_first_of(",\"\n", position_), bytes_.size());
        const std::string text = bytes_.substr(position_, end - position_);
        position_ = end;
        return text;
    }

    std::string quoted()
    {
        std::string text;
        for (;;) {
            if (atEnd())
                throw std::runtime_error("a quoted field does not end");
            if (take("\"\""))
                text += '"';
            else if (take("\""))
                return text;
            else
                text += bytes_[position_++];
        }
    }

    const std::string& bytes_;
    std::size_t position_ = 0;
};

} // namespace

std::vector<Record> parseCsv(const std::string& bytes)
{
    std::vector<Record> records;
    for (Reader reader(bytes); !reader.atEnd();) {
        records.push_back(reader.record());
        if (!reader.take("\n"))
            throw std::runtime_error("a record does not end in LF");
    }
    return records;
}

} // namespace tests
} // namespace casetable
