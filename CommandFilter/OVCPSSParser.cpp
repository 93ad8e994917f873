#include "CommandFilter/OVCPSSParser.h"

#include "CommandFilter/CPSSKeywords.h"

#include <span>

namespace orvan {
namespace {

constexpr std::size_t kMapCapacity = 50;

OVBidirectionalDictionary mapOf(std::span<const WordPair> rows) {
    OVBidirectionalDictionary map(kMapCapacity);
    for (const WordPair& row : rows)
        map.setObjectForKey(row.value, row.key);
    return map;
}

} // namespace

const OVBidirectionalDictionary& OVCPSSParser::sizeMap() {
    static const OVBidirectionalDictionary map = mapOf({});
    return map;
}

const OVBidirectionalDictionary& OVCPSSParser::colorMap() {
    static const OVBidirectionalDictionary map = mapOf(kColorKeywords);
    return map;
}

const OVBidirectionalDictionary& OVCPSSParser::typeMap() {
    static const OVBidirectionalDictionary map = mapOf(kTypeKeywords);
    return map;
}

const OVBidirectionalDictionary& OVCPSSParser::trayMap() {
    static const OVBidirectionalDictionary map = mapOf(kTrayKeywords);
    return map;
}

const OVBidirectionalDictionary& OVCPSSParser::coatingTypeMap() {
    static const OVBidirectionalDictionary map = mapOf(kCoatingTypeKeywords);
    return map;
}

} // namespace orvan
