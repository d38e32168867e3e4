// The exceptions that internal routines throw. Only the frame of the exported functions catches
// them (src/api/call_frame.h); none crosses the C boundary.
#pragma once

#include <cstdint>
#include <stdexcept>
#include <string>

#include "util/numeric_contract.h"

namespace sorvo::Util::Exceptions {

/// Root of the library's exceptions: a message, a status code, and context that a caller which
/// layers its own work on top may add once.
class SorvoException {
  public:
    SorvoException(std::string message, int code);
    virtual ~SorvoException() = default;

    virtual int errorCode() const noexcept { return code; }
    /// The message; "Layer:<layer> Error:<message>" once layer information is set. The pointer is
    /// valid until the next call or the end of the object.
    virtual const char* errorDetail() const noexcept;
    /// Always "": no stack is recorded.
    virtual const char* stackTrace() const noexcept { return ""; }
    virtual const std::string& getLayerInfo() const noexcept { return layerInfo; }
    /// Records "<name>(<type>)". The first call wins: the innermost layer knows best.
    virtual void setLayerInfo(const std::string& name, const std::string& type);

  private:
    std::string layerInfo;
    std::string message;
    std::int32_t code;
    mutable std::string detail;
};

/// Joins the standard hierarchy and the library's own; what() shows the layer information too.
class SorvoInvalidArgumentExceptionBase : public std::invalid_argument, public SorvoException {
  public:
    SorvoInvalidArgumentExceptionBase(const std::string& message, int code);
    const char* what() const noexcept override;
};

/// A failed argument check. Its status code is -1.
class SorvoInvalidArgument : public SorvoInvalidArgumentExceptionBase {
  public:
    explicit SorvoInvalidArgument(const char* message);
};

}  // namespace sorvo::Util::Exceptions

namespace sorvo::audio {
using Util::Exceptions::SorvoException;
using Util::Exceptions::SorvoInvalidArgument;
}  // namespace sorvo::audio
