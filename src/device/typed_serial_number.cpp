#include "device/typed_serial_number.h"

#include "model/serial_number.h"

#include <string>

namespace quobrix {

std::optional<std::int32_t> convertTypedSerialNumber(std::string_view text, LoggerCalls& calls, Prompter& prompter) {
    if (!isAcceptedTyped(text)) {
        prompter.tell(makeMessage(MessageId::InvalidSerialNumber));
        return std::nullopt;
    }
    const auto number =
        calls.get([&](const LockedLogger& logger) { return logger.serialNumberToInt(std::string(text)); });
    return number.ok() ? std::optional(number.value) : std::nullopt;
}

} // namespace quobrix
