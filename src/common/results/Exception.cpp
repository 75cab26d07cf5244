#include "common/results/Exception.h"

namespace KXP {

Exception::Exception(int code, const char* message, int internal)
    : std::runtime_error(message), value_{code, message, internal}, formatted_(ToStr(value_)) {}

RetVal ExceptionToRetVal() {
    try {
        throw;
    } catch (const Exception& error) {
        return {error.code(), error.message(), error.internal()};
    } catch (const std::exception& error) {
        return {Code::kUnexpected, error.what(), 0};
    } catch (...) {
        // The failure code keeps the default text: there is nothing to add, and clients match on the code.
        return {Code::kUnexpected, "Success", 0};
    }
}

std::string ExceptionText(const std::exception& error) {
    if (const auto* ours = dynamic_cast<const Exception*>(&error)) return ours->message();
    return error.what();
}

}  // namespace KXP
