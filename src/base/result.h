#pragma once

#include "base/shown_text.h"

#include <utility>
#include <variant>

namespace quobrix {

/// Why an operation on files or devices failed. The text for the user is chosen from the kind at the edge.
enum class ErrorKind {
    NotFound,     ///< the file, stream or function does not exist
    AccessDenied, ///< the user may not read or write it
    IsDirectory,  ///< a folder where a file was expected
    InUse,        ///< another program has it open for writing
    Exists,       ///< there is a file of that name already
    Changed,      ///< the file is no longer what it was when it was opened
    ReadOnly,     ///< opened for reading only
    NotADocument, ///< the bytes are not of the expected format at all
    Corrupt,      ///< the right format, but damaged
    DiskFull,     ///< no space left (or over quota)
    Cancelled,    ///< the person stopped it; there is nothing to tell
    Io,           ///< any other failure of the operating system
    Unsupported,  ///< a later format, or something this build cannot do
    NotDurable,   ///< it is done, but the system has failed to say that a power cut will not undo it
};

/// A kind for the program and a detail for the log and for "what exactly" lines; never shown alone to the user.
struct Error {
    ErrorKind kind = ErrorKind::Io;
    ShownText detail;
};

/// Holds a T or an Error; the caller cannot ignore it.
template <class T>
class [[nodiscard]] Result {
public:
    using Value = T;
    Result(T value) : state_(std::in_place_index<0>, std::move(value)) {}
    Result(Error error) : state_(std::in_place_index<1>, std::move(error)) {}

    explicit operator bool() const { return state_.index() == 0; }
    /// Only when true as bool.
    T& operator*() & { return *std::get_if<0>(&state_); }
    const T& operator*() const& { return *std::get_if<0>(&state_); }
    T&& operator*() && { return std::move(*std::get_if<0>(&state_)); }
    T* operator->() { return std::get_if<0>(&state_); }
    const T* operator->() const { return std::get_if<0>(&state_); }
    /// Only when false as bool.
    const Error& error() const { return *std::get_if<1>(&state_); }

private:
    std::variant<T, Error> state_;
};

template <>
class [[nodiscard]] Result<void> {
public:
    Result() = default;
    Result(Error error) : failed_(true), error_(std::move(error)) {}

    explicit operator bool() const { return !failed_; }
    const Error& error() const { return error_; }

private:
    bool failed_ = false;
    Error error_;
};

} // namespace quobrix

/// Returns the error of EXPRESSION (a Result) from the enclosing function, if it failed.
#define QUOBRIX_TRY(EXPRESSION)                                                                                        \
    do {                                                                                                               \
        if (auto quobrixTried = (EXPRESSION); !quobrixTried)                                                           \
            return quobrixTried.error();                                                                               \
    } while (false)
