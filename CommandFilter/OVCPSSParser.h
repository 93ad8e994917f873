// Between the printer's keywords, whose vocabulary is called CPSS here, and those of its PPD.
#pragma once

#include "CommandFilter/OVBidirectionalDictionary.h"
#include "Common/TicketVocabulary.h"

#include <string>

namespace orvan {

// Printer-side keywords ("stationery-heavyweight", "tray-1", "no-color") and the PPD choice keywords that
// name the same ("HeavyPlain", "Tray1", "Clear"), one map a kind. Keywords are compared exactly.
//
// The maps are built at their first use, once whichever threads ask, and live until the process ends; they
// may be read from several threads. What a look-up answers belongs to the map; null when it has no such
// keyword.
class OVCPSSParser {
public:
    using Keyword = OVBidirectionalDictionary::Text;

    static const OVBidirectionalDictionary& sizeMap(); // has no rows, so nothing is found in it
    static const OVBidirectionalDictionary& colorMap();
    static const OVBidirectionalDictionary& typeMap();
    static const OVBidirectionalDictionary& trayMap();
    static const OVBidirectionalDictionary& coatingTypeMap();

    // Of the given vocabulary; nothing here calls these: the
    // status document's parser asks the maps.
    // The PPD keyword for the printer's. For the reverse, ask the map itself: keyForObject().
    const std::string* keyForCPSSSize(Keyword keyword) const { return sizeMap().objectForKey(keyword); }
    const std::string* keyForCPSSType(Keyword keyword) const { return typeMap().objectForKey(keyword); }
    const std::string* keyForCPSSColor(Keyword keyword) const { return colorMap().objectForKey(keyword); }
    const std::string* keyForCPSSTray(Keyword keyword) const { return trayMap().objectForKey(keyword); }
    const std::string* keyForCPSSCoatingType(Keyword keyword) const {
        return coatingTypeMap().objectForKey(keyword);
    }
};

} // namespace orvan
