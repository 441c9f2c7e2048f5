#include "units/unit_system_store.h"

#include "base/fold_case.h"
#include "base/path_text.h"
#include "platform/file_system.h"
#include "texts/text.h"
#include "units/unit_system_file.h"

#include <algorithm>
#include <set>
#include <utility>

namespace quobrix {
namespace {

namespace fs = std::filesystem;

constexpr std::string_view kSection = "Unit Systems";
constexpr std::string_view kCurrent = "Current Unit System";
constexpr std::string_view kExtension = ".us";
constexpr std::size_t kMaxNameSize = 100; // bytes; far below what file systems allow

fs::path fileName(std::string_view system) { return pathFromUtf8(std::string(system).append(kExtension)); }

/// Names that one of the systems the program runs on keeps for devices, whatever extension follows.
bool isDeviceName(std::string_view name) {
    const std::string base = foldCase(name.substr(0, name.find('.')));
    if (base == "con" || base == "prn" || base == "aux" || base == "nul")
        return true;
    return base.size() == 4 && (base.starts_with("com") || base.starts_with("lpt")) && base[3] >= '0' && base[3] <= '9';
}

/// Whether NAME can be a file's name on every system.
bool isFileName(std::string_view name) {
    const auto unfit = [](char c) {
        return static_cast<unsigned char>(c) < 0x20 || c == 0x7F ||
               std::string_view("\\/:*?\"<>|").find(c) != std::string_view::npos;
    };
    return !name.empty() && name.size() <= kMaxNameSize && name.front() != '.' && name.front() != ' ' &&
           name.back() != ' ' && std::ranges::none_of(name, unfit) && !isDeviceName(name);
}

bool isReadOnly(const fs::path& file) {
    std::error_code error;
    const fs::perms written = fs::perms::owner_write | fs::perms::group_write | fs::perms::others_write;
    const fs::perms permissions = fs::status(file, error).permissions();
    return !error && (permissions & written) == fs::perms::none;
}

Error unfitName(std::string_view name) { return {ErrorKind::Unsupported, text(TextId::UnitSystemName, name)}; }
Error lockedSystem(std::string_view name) { return {ErrorKind::ReadOnly, text(TextId::LockedUnitSystem, name)}; }

Result<void> removeFile(const fs::path& file) {
    std::error_code error;
    fs::remove(file, error);
    if (error)
        return Error{ErrorKind::AccessDenied, text(TextId::WithDetail, utf8(file), error.message())};
    return {};
}

} // namespace

UnitSystemStore::UnitSystemStore(TUnitSystem& current, UnitSystemFolders folders, Settings* settings)
    : current_(current), folders_(std::move(folders)), settings_(settings) {}

std::vector<std::string> UnitSystemStore::listSystems() const {
    std::set<std::string> names{std::string(kSiSystemName)};
    for (const fs::path& folder : {folders_.program, folders_.user}) {
        std::error_code error;
        for (fs::directory_iterator entry(folder, error), end; !error && entry != end; entry.increment(error)) {
            std::error_code ignored;
            std::string name = utf8(entry->path().stem());
            if (entry->path().extension() == kExtension && isFileName(name) && entry->is_regular_file(ignored))
                names.insert(std::move(name));
        }
    }
    return {names.begin(), names.end()};
}

std::optional<Message> UnitSystemStore::checkName(std::string_view name) const {
    if (name.find_first_not_of(' ') == std::string_view::npos)
        return makeMessage(MessageId::ErrUsNoName);
    if (!isFileName(name))
        return makeMessage(MessageId::ErrUsBadName);
    const auto sameName = [folded = foldCase(name)](const std::string& other) { return foldCase(other) == folded; };
    // The disk is asked too: it may have its own notion of equal names.
    if (std::ranges::any_of(listSystems(), sameName) || find(name))
        return makeMessage(MessageId::ErrUsDlgNew);
    return {};
}

Result<void> UnitSystemStore::loadSystem(std::string_view name) {
    Result<UnitChoices> choices = read(name);
    if (!choices)
        return choices.error();
    current_.replace(*std::move(choices));
    remember();
    return {};
}

Result<void> UnitSystemStore::saveSystem() {
    if (const std::optional<fs::path> file = find(current_.name()); file && isReadOnly(*file))
        current_.markLocked();
    if (current_.locked())
        return lockedSystem(current_.name());
    QUOBRIX_TRY(write(current_.choices()));
    current_.markSaved(std::string(current_.name()));
    return {};
}

Result<void> UnitSystemStore::saveChanges() {
    return current_.modified() && !current_.locked() ? saveSystem() : Result<void>{};
}

Result<void> UnitSystemStore::switchSystem(std::string_view name) {
    QUOBRIX_TRY(saveChanges());
    return loadSystem(name);
}

Result<void> UnitSystemStore::newSystem(std::string_view name, std::string_view base) {
    if (checkName(name))
        return unfitName(name);
    QUOBRIX_TRY(saveChanges());
    Result<UnitChoices> choices = base == current_.name() ? current_.choices() : read(base);
    if (!choices)
        return choices.error();
    choices->name = name;
    choices->modified = false;
    choices->locked = false;
    QUOBRIX_TRY(write(*choices));
    current_.replace(*std::move(choices));
    remember();
    return {};
}

Result<void> UnitSystemStore::renameSystem(std::string_view newName) {
    if (current_.locked())
        return lockedSystem(current_.name());
    if (checkName(newName))
        return unfitName(newName);
    const std::optional<fs::path> old = find(current_.name());
    UnitChoices renamed = current_.choices();
    renamed.name = newName;
    QUOBRIX_TRY(write(renamed));
    if (old) {
        if (const Result<void> removed = removeFile(*old); !removed) {
            if (const std::optional<fs::path> created = find(newName))
                (void)removeFile(*created);
            return removed;
        }
    }
    current_.markSaved(newName);
    remember();
    return {};
}

Result<void> UnitSystemStore::deleteSystem() {
    if (current_.locked())
        return lockedSystem(current_.name());
    if (const std::optional<fs::path> file = find(current_.name()))
        QUOBRIX_TRY(removeFile(*file));
    if (!loadSystem(kUsSystemName)) { // the file is gone anyway, and its system must not stay
        current_.resetToSI();
        remember();
    }
    return {};
}

std::optional<Message> UnitSystemStore::loadAtStartUp() {
    std::string remembered = settings_ ? settings_->getText(kSection, kCurrent) : std::string{};
    if (remembered.empty())
        remembered = kUsSystemName;
    // "U.S." comes first, so that it stays if the remembered one cannot be had; it is not remembered in its place.
    for (const std::string& name : {std::string(kUsSystemName), remembered}) {
        Result<UnitChoices> choices = read(name);
        if (choices)
            current_.replace(*std::move(choices));
        else if (name == remembered && choices.error().kind == ErrorKind::NotFound)
            return makeMessage(MessageId::ErrUntSy, remembered);
        else if (name == remembered)
            return makeMessage(MessageId::ErrUntSyDamaged, remembered, choices.error().detail, current_.name());
    }
    return {};
}

std::optional<fs::path> UnitSystemStore::find(std::string_view name) const {
    if (!isFileName(name))
        return {};
    for (const fs::path& folder : {folders_.user, folders_.program}) {
        std::error_code error;
        if (fs::path file = folder / fileName(name); !folder.empty() && fs::is_regular_file(file, error))
            return file;
    }
    return {};
}

Result<UnitChoices> UnitSystemStore::read(std::string_view name) const {
    if (name == kSiSystemName)
        return UnitChoices{};
    const std::optional<fs::path> file = find(name);
    if (!file)
        return Error{ErrorKind::NotFound, text(TextId::UnitSystemNamed, name)};
    const Result<Bytes> bytes = readFile(*file, kMaxUnitSystemFile);
    if (!bytes)
        return bytes.error();
    Result<UnitChoices> choices = decodeUnitSystem(name, *bytes);
    if (choices)
        choices->locked = isReadOnly(*file);
    return choices;
}

Result<void> UnitSystemStore::write(const UnitChoices& choices) const {
    const auto writeHidden = [bytes = encodeUnitSystem(choices)](const fs::path& file) -> Result<void> {
        QUOBRIX_TRY(writeFileAtomically(file, bytes));
        (void)hideFile(file); // a file that stays visible serves as well
        return {};
    };
    const std::optional<fs::path> existing = find(choices.name);
    const fs::path first = existing ? existing->parent_path() : folders_.program;
    Result<void> written = writeHidden(first / fileName(choices.name));
    if (written || first == folders_.user || folders_.user.empty() || written.error().kind == ErrorKind::DiskFull)
        return written;
    std::error_code error;
    fs::create_directories(folders_.user, error); // a failure shows in the writing
    return writeHidden(folders_.user / fileName(choices.name));
}

void UnitSystemStore::remember() const {
    if (settings_)
        settings_->setText(kSection, kCurrent, current_.name());
}

} // namespace quobrix
