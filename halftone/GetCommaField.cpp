#include "halftone/GetCommaField.h"

#include "host/Text.h"

int GetCommaField(int index, std::string_view text, char (&field)[kCommaFieldBytes]) {
    for (; index > 0; --index) {
        const std::size_t comma = text.find(',');
        if (comma == std::string_view::npos) text = {};
        text.remove_prefix(text.empty() ? 0 : comma + 1);
    }
    CopyText(field, sizeof field, text.substr(0, text.find(',')));
    const std::size_t length = FieldText(field, sizeof field).size();
    return length == 0 ? 0 : static_cast<int>(length) + 1;
}
