#include "BiDi/ResponseEntries.h"

#include "BiDi/WhiteSpace.h"
#include "Platform/Unicode.h"

#include <cups/ppd.h>

namespace orvan {

EntryDictionary entriesInTaskOutput(std::string_view output) {
    EntryDictionary entries;
    if (platform::findInvalidUTF8(output) != std::string_view::npos) return entries;
    char* const text = entries.addText(output.size() + 1);
    output.copy(text, output.size());

    PieceReader reader({text, output.size()});
    std::string_view piece;
    do {
        if (!reader.rest().starts_with("PPD: ")) {
            reader.next(&piece, PieceReader::At::lineBreaks);
            continue;
        }
        do {
            reader.next(&piece, PieceReader::At::everySeparator);
            const auto equals = piece.find('=');
            if (equals == std::string_view::npos) continue;
            const std::string_view value = piece.substr(equals + 1);
            // In place of the separator, which the reader has passed.
            text[value.data() + value.size() - text] = '\0';
            entries.insert({piece.substr(0, equals), value});
        } while (reader.endedBy() == Separator::space);
    } while (reader.endedBy() != Separator::none);
    return entries;
}

const char* ppdx_get_chunk_ppd(void* source, const char* keyword) {
    if (source == nullptr || keyword == nullptr) return nullptr;
    const ppd_attr_t* const attribute = ppdFindAttr(static_cast<ppd_file_t*>(source), keyword, nullptr);
    return attribute != nullptr ? attribute->value : nullptr;
}

const char* ppdx_get_chunk_nsdictionary(void* source, const char* keyword) {
    if (source == nullptr || keyword == nullptr) return nullptr;
    const auto* const entry = static_cast<const EntryDictionary*>(source)->find(keyword);
    return entry != nullptr ? entry->value.data() : nullptr;
}

} // namespace orvan
