#include "BiDi/ResponseEntries.h"

#include "BiDi/WhiteSpace.h"

#include <cups/ppd.h>

namespace orvan {

EntryDictionary entriesInTaskOutput(std::string_view output) {
    // Short of a chunk's usual length, so that the room for it need not grow.
    constexpr std::size_t kUsualLength = 200;
    EntryDictionary entries;
    entries.reserve(output.size() / kUsualLength);
    // A zero byte takes the separator's place.
    char* text = entries.addText(output.size() + 1);

    PieceReader reader(output);
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
            piece.copy(text, piece.size());
            text[piece.size()] = '\0';
            entries.insert({{text, equals}, {text + equals + 1, piece.size() - equals - 1}});
            text += piece.size() + 1;
        } while (reader.endedBy() == Separator::space);
    } while (reader.endedBy() != Separator::none);
    if (!reader.isUTF8()) return {};
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
