#include "model/serial_number.h"

namespace quobrix {
namespace {

bool isLetter(char c) { return c >= 'A' && c <= 'Z'; }
bool isDigit(char c) { return c >= '0' && c <= '9'; }

} // namespace

bool isSerialNumber(std::string_view text) {
    return text.size() == kSerialNumberLength && isLetter(text[0]) && text[1] == '-' && isDigit(text[2]) &&
           isDigit(text[3]) && isDigit(text[4]) && isDigit(text[5]) && text[6] == '-' && isLetter(text[7]);
}

bool isAcceptedTyped(std::string_view text) {
    if (text.size() != kSerialNumberLength)
        return false;
    // Where the upper bound looks at a neighbour it does so on purpose: see the header.
    return isLetter(text[0]) && text[1] == '-' && text[2] >= '0' && text[3] <= '9' && isDigit(text[3]) &&
           text[4] >= '0' && text[3] <= '9' && text[5] >= '0' && text[3] <= '9' && text[6] == '-' && text[7] >= 'A' &&
           text[6] <= 'Z';
}

} // namespace quobrix
