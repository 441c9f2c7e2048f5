#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

namespace quobrix {

/// Where the settings lie: the registry on Windows, the per-user configuration file elsewhere, memory in tests.
class SettingsBackend {
public:
    virtual ~SettingsBackend() = default;
    /// The stored text; empty when there is none (an empty text is never stored).
    virtual std::string read(std::string_view section, std::string_view name) const = 0;
    /// Stores VALUE; an empty one removes the entry. A place that cannot be written is no error: the value then holds
    /// for this run only.
    virtual void write(std::string_view section, std::string_view name, std::string_view value) = 0;
    /// Stores the integer that VALUE is the decimal text of; what read() gives back is that text. For places that keep
    /// integers apart.
    virtual void writeInteger(std::string_view section, std::string_view name, std::string_view value) {
        write(section, name, value);
    }
};

/// Settings that end with the process.
class MemorySettings final : public SettingsBackend {
public:
    std::string read(std::string_view section, std::string_view name) const override;
    void write(std::string_view section, std::string_view name, std::string_view value) override;

private:
    std::map<std::pair<std::string, std::string>, std::string> values_;
};

/// This integer means that a setting is to be missing.
inline constexpr std::int32_t kMissingInteger = -888888888;

/// Typed settings by section and value name, and the journal of changes that undo and discard work on.
/// User-interface thread only. A value that cannot be read as its type counts as missing. Numbers are written and read
/// without regard to the locale.
class Settings {
public:
    explicit Settings(std::unique_ptr<SettingsBackend> backend);

    std::string getText(std::string_view section, std::string_view name, std::string_view fallback = {}) const;
    std::int32_t getInteger(std::string_view section, std::string_view name, std::int32_t fallback) const;
    bool getBoolean(std::string_view section, std::string_view name, bool fallback) const;
    /// Stored as "%.9f" text.
    double getReal(std::string_view section, std::string_view name, double fallback) const;

    /// Each setter with JOURNAL first records the previous value, while the journal is enabled.
    /// An empty text, the integer kMissingInteger and a real that is not finite remove the value.
    void setText(std::string_view section, std::string_view name, std::string_view value, bool journal = false);
    void setInteger(std::string_view section, std::string_view name, std::int32_t value, bool journal = false);
    void setBoolean(std::string_view section, std::string_view name, bool value, bool journal = false);
    void setReal(std::string_view section, std::string_view name, double value, bool journal = false);

    void enableJournal(bool enabled) { journalEnabled_ = enabled; }
    bool journalEnabled() const { return journalEnabled_; }
    /// A place in the journal, to undo or discard down to.
    std::size_t journalMark() const { return journal_.size(); }
    /// Writes the old values back, newest first, down to MARK; never journals itself.
    void undoTo(std::size_t mark);
    /// Forgets the entries down to MARK without writing.
    void discardTo(std::size_t mark);

private:
    enum class Type { Text, Integer };
    struct Entry {
        std::string section, name, previous;
        Type type;
    };

    void store(Type type, std::string_view section, std::string_view name, std::string_view value, bool journal);

    std::unique_ptr<SettingsBackend> backend_;
    std::vector<Entry> journal_;
    bool journalEnabled_ = false;
};

} // namespace quobrix
