#include "util/exceptions.h"

#include <utility>

namespace sorvo::Util::Exceptions {

SorvoException::SorvoException(std::string message_text, int error_code)
    : message(std::move(message_text)), code(error_code) {}

const char* SorvoException::errorDetail() const noexcept {
    if (layerInfo.empty()) {
        return message.c_str();
    }
    detail = "Layer:" + layerInfo + " Error:" + message;
    return detail.c_str();
}

void SorvoException::setLayerInfo(const std::string& name, const std::string& type) {
    if (layerInfo.empty()) {
        layerInfo = name + "(" + type + ")";
    }
}

SorvoInvalidArgumentExceptionBase::SorvoInvalidArgumentExceptionBase(
    const std::string& message_text, int error_code)
    : std::invalid_argument(message_text), SorvoException(message_text, error_code) {}

const char* SorvoInvalidArgumentExceptionBase::what() const noexcept {
    return errorDetail();
}

SorvoInvalidArgument::SorvoInvalidArgument(const char* message_text)
    : SorvoInvalidArgumentExceptionBase(message_text, -1) {}

}  // namespace sorvo::Util::Exceptions
