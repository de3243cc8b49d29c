#include "store/Value.h"

#include <sqlite3.h>

Value Value::of(sqlite3_value* value)
{
    Value out;
    if (!value) return out;
    switch (sqlite3_value_type(value)) {
    case SQLITE_INTEGER:
        out.type = Type::Integer;
        out.integer = sqlite3_value_int64(value);
        break;
    case SQLITE_FLOAT:
        out.type = Type::Real;
        out.real = sqlite3_value_double(value);
        break;
    case SQLITE_TEXT:
        out.type = Type::Text;
        out.bytes.assign(reinterpret_cast<const char*>(sqlite3_value_text(value)),
                         static_cast<size_t>(sqlite3_value_bytes(value)));
        break;
    case SQLITE_BLOB: {
        out.type = Type::Blob;
        const auto* data = static_cast<const char*>(sqlite3_value_blob(value));
        if (data) out.bytes.assign(data, static_cast<size_t>(sqlite3_value_bytes(value)));
        break;
    }
    default:
        out.type = Type::Null;
    }
    return out;
}
