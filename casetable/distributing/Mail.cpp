#include "casetable/distributing/Mail.h"

#include <algorithm>
#include <cstdint>
#include <string_view>
#include <utility>

#include <xxhash.h>

#include "casetable/system/Bytes.h"

namespace casetable {

namespace {

const std::size_t sealBytes = 8;

// What stands behind a message, so that damage on the way shows.
std::string sealOf(std::string_view message)
{
    ByteWriter writer;
    writer.number(XXH3_64bits(message.data(), message.size()));
    return writer.take();
}

void breakSeal(std::string& message)
{
    if (message.size() < sealBytes)
        throw BrokenBytes("a message between processes is cut off");
    const std::string seal = message.substr(message.size() - sealBytes);
    message.resize(message.size() - sealBytes);
    if (seal != sealOf(message))
        throw BrokenBytes("a message between processes is damaged");
}

} // namespace

void Mail::send(std::size_t to, std::string message)
{
    if (to == processes_.number()) {
        own_.push_back({to, std::move(message)});
        return;
    }
    message += sealOf(message);
    for (std::size_t begin = 0; begin < message.size();) {
        const std::size_t size = std::min(mostBytes_, message.size() - begin);
        processes_.send(to, message.data() + begin, size, begin + size == message.size());
        begin += size;
    }
}

std::optional<Mail::Letter> Mail::receive()
{
    if (!own_.empty()) {
        Letter letter = std::move(own_.front());
        own_.pop_front();
        return letter;
    }
    while (const auto arrival = processes_.arrival()) {
        std::string& message = incoming_[arrival->from];
        const std::size_t known = message.size();
        message.resize(known + arrival->size);
        processes_.receive(*arrival, &message[known]);
        if (!arrival->mark)
            continue;
        Letter letter = {arrival->from, std::move(message)};
        incoming_.erase(arrival->from);
        breakSeal(letter.message);
        return letter;
    }
    return std::nullopt;
}

} // namespace casetable
