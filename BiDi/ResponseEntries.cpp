#include "BiDi/ResponseEntries.h"

#include "BiDi/WhiteSpace.h"
#include "Platform/Unicode.h"

#include <cups/ppd.h>

namespace orvan {
namespace {

void addEntriesOfLine(std::string_view line, EntryDictionary& entries) {
    PieceReader pieces(line, PieceReader::At::everySeparator);
    for (std::string_view piece; pieces.next(&piece);) {
        const auto equals = piece.find('=');
        if (equals != std::string_view::npos)
            entries[std::string(piece.substr(0, equals))] = piece.substr(equals + 1);
    }
}

} // namespace

EntryDictionary entriesInTaskOutput(std::string_view output) {
    EntryDictionary entries;
    if (platform::findInvalidUTF8(output) != std::string_view::npos) return entries;
    PieceReader lines(output, PieceReader::At::lineBreaks);
    for (std::string_view line; lines.next(&line);)
        if (line.starts_with("PPD: ")) addEntriesOfLine(line, entries);
    return entries;
}

const char* ppdx_get_chunk_ppd(void* source, const char* keyword) {
    if (source == nullptr || keyword == nullptr) return nullptr;
    const ppd_attr_t* const attribute = ppdFindAttr(static_cast<ppd_file_t*>(source), keyword, nullptr);
    return attribute != nullptr ? attribute->value : nullptr;
}

const char* ppdx_get_chunk_nsdictionary(void* source, const char* keyword) {
    if (source == nullptr || keyword == nullptr) return nullptr;
    const auto& entries = *static_cast<EntryDictionary*>(source);
    const auto found = entries.find(keyword);
    return found != entries.end() ? found->second.c_str() : nullptr;
}

} // namespace orvan
