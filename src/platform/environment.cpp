#include "platform/environment.h"

namespace quobrix {

std::vector<const char*> ProgramArguments::texts() const {
    std::vector<const char*> texts;
    for (const std::string& text : texts_)
        texts.push_back(text.c_str());
    return texts;
}

} // namespace quobrix
