#include "Module.h"

namespace quillon::agent {

const char* TypeName(ValueType type) {
    switch (type) {
        case ValueType::Integer:
            return "integer";
        case ValueType::Boolean:
            return "boolean";
        case ValueType::Double:
            return "double";
        case ValueType::Text:
            break;
    }
    return "text";
}

}  // namespace quillon::agent
