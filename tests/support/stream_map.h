#pragma once

#include "compound/compound_file.h"

#include <functional>
#include <map>

namespace quobrix::test {

/// Streams in memory without a file around them, for what is above the compound file.
class StreamMap : public CompoundFile {
public:
    std::map<std::string, Bytes, std::less<>> streams;

    bool contains(std::string_view name) const override { return streams.contains(name); }
    std::vector<std::string> names() const override {
        std::vector<std::string> names;
        for (const auto& [name, content] : streams)
            names.push_back(name);
        return names;
    }
    using CompoundFile::read;
    Result<void> read(std::string_view name, Bytes& content) const override {
        const auto found = streams.find(name);
        if (found == streams.end())
            return Error{ErrorKind::NotFound, ShownText::asItIs(std::string(name))};
        content = found->second;
        return {};
    }
    void write(std::string_view name, Bytes content) override {
        streams.insert_or_assign(std::string(name), std::move(content));
    }
    void remove(std::string_view name) override {
        if (const auto found = streams.find(name); found != streams.end())
            streams.erase(found);
    }
    Result<void> spill() override { return {}; }
    Result<void> commit() override { return {}; }
    Result<void> writable() const override { return {}; }
    Result<void> copyTo(File&) const override {
        return Error{ErrorKind::Unsupported, ShownText::asItIs("there is no file")};
    }
    Result<void> compactTo(File& target) const override { return copyTo(target); }
    Space space() const override { return {}; }
};

} // namespace quobrix::test
