#pragma once

#include "base/result.h"
#include "messages/message.h"

namespace quobrix {

/// What is being done to a file, as the messages word it.
enum class FileAction { Open, Save, Delete, Compact };

/// Its word in them ("saved").
std::string fileActionText(FileAction action);

/// The message for ERROR, met by ACTION on the file called NAME (as the user knows it; whoever gave no
/// name is told so).
Message fileMessage(const Error& error, FileAction action, std::string_view name);

/// The same of a text file that people write, which could not be read: what is wrong with it is told, too.
Message textFileMessage(const Error& error, std::string_view name);

} // namespace quobrix
