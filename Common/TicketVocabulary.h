// The vocabulary of the ticket: the dictionary of printer data that the readers of a printer's answers fill.
//
// Names follow IPP (RFC 8011) and the media keywords of PWG 5101.1 where these have one; the others are this
// system's own.
#pragma once

#include "Formats/PropertyList.h"

#include <string_view>

namespace orvan {

using Ticket = platform::PropertyList::Dictionary;

// Syntaxes of attributes.
inline constexpr std::string_view OVCPSSKeywordSyntax = "keyword";
inline constexpr std::string_view OVCPSSNameSyntax = "name";
inline constexpr std::string_view OVCPSSCollectionSyntax = "collection";
inline constexpr std::string_view OVCPSS1SetOfSyntax = "1setOf";
inline constexpr std::string_view OVCPSSIntegerSyntax = "integer";
inline constexpr std::string_view OVCPSSTextSyntax = "text";

// The printer's state.
inline constexpr std::string_view OVCPSSPrinterState = "printer-state";
inline constexpr std::string_view OVCPSSIdleState = "idle";
inline constexpr std::string_view OVCPSSProcessingState = "processing";
inline constexpr std::string_view OVCPSSStoppedState = "stopped";
inline constexpr std::string_view OVCPSSPrinterStateMessage = "printer-state-message";
inline constexpr std::string_view OVCPSSPrinterStateReasons = "printer-state-reasons";

// Alerts.
inline constexpr std::string_view OVCPSSPrinterAlerts = "alert-status-col";
inline constexpr std::string_view OVCPSSPrinterAlertFunctionalArea = "alert-functional-area";
inline constexpr std::string_view OVCPSSPrintFunctionalArea = "print";
inline constexpr std::string_view OVCPSSScanFunctionalArea = "scan";
inline constexpr std::string_view OVCPSSFaxFunctionalArea = "fax";
inline constexpr std::string_view OVCPSSFinishFunctionalArea = "finish";
inline constexpr std::string_view OVCPSSSystemFunctionalArea = "system";
inline constexpr std::string_view OVCPSSPrinterAlertSeverity = "alert-severity-level";
inline constexpr std::string_view OVCPSSCriticalAlertSeverity = "critical";
inline constexpr std::string_view OVCPSSWarningAlertSeverity = "warning";
inline constexpr std::string_view OVCPSSInfoAlertSeverity = "info";
inline constexpr std::string_view OVCPSSPrinterAlertText = "alert-text-brief";
inline constexpr std::string_view OVCPSSPrinterAlertDetail = "alert-text-detailed";
inline constexpr std::string_view OVCPSSPrinterAlertDate = "alert-time-stamp";

// Supplies.
inline constexpr std::string_view OVCPSSColorantHousing = "colorant-housing-col";
inline constexpr std::string_view OVCPSSColorant = "colorant";
inline constexpr std::string_view OVCPSSCyanColorant = "cyan";
inline constexpr std::string_view OVCPSSMagentaColorant = "magenta";
inline constexpr std::string_view OVCPSSYellowColorant = "yellow";
inline constexpr std::string_view OVCPSSBlackColorant = "black";
inline constexpr std::string_view OVCPSSColorantLevel = "colorant-level";
inline constexpr std::string_view OVCPSSColorantType = "colorant-type";
inline constexpr std::string_view OVCPSSTonerColorantType = "toner";
inline constexpr std::string_view OVCPSSSolidInkColorantType = "solid-ink";
inline constexpr std::string_view OVCPSSInkColorantType = "ink";
inline constexpr std::string_view OVCPSSInkblockColorantType = "inkblock";

// Input trays and their media.
inline constexpr std::string_view OVCPSSInputTrays = "input-trays-col";
inline constexpr std::string_view OVCPSSTrayLevel = "tray-level";
inline constexpr std::string_view OVCPSSTrayCapacity = "tray-capacity";
inline constexpr std::string_view OVCPSSTrayName = "tray-name";
inline constexpr std::string_view OVCPSSTrayStatus = "tray-status";
inline constexpr std::string_view OVCPSSMedia = "media-col";
inline constexpr std::string_view OVCPSSMediaSize = "media-size";
inline constexpr std::string_view OVCPSSMediaSizeName = "media-size-name";
inline constexpr std::string_view OVCPSSMediaColor = "media-color";
inline constexpr std::string_view OVCPSSMediaType = "media-type";

// The job-accounting object, under the maker's arc of private enterprises.
inline constexpr char OVSNMPJobAccountingOIDStr[] = "1.3.6.1.4.1.97531.8.83.1.1.2.1.7.1";
inline constexpr std::string_view OVSNMPJobAccountingOID = OVSNMPJobAccountingOIDStr;

// Custom paper types: the list, and the keys of a record of it.
inline constexpr std::string_view OVOVGCustomPaperTypes = "customPaperTypes";
inline constexpr std::string_view OVOVGCustomPaperType = "customPaperType";
inline constexpr std::string_view OVOVGCustomPaperTypeName = "name";
inline constexpr std::string_view OVOVGCustomPaperTypeBase = "baseClass";
inline constexpr std::string_view OVOVGCustomPaperTypeIndex = "type";

// Stored jobs: the list, and the keys and values of a record of it.
inline constexpr std::string_view kSavedJobs = "OVSavedJobs";
inline constexpr std::string_view kJobName = "OVJobName";
inline constexpr std::string_view kJobID = "OVJobID";
inline constexpr std::string_view kSaveContext = "OVSaveContext";
inline constexpr std::string_view kPrivateContext = "Private";
inline constexpr std::string_view kPublicContext = "Public";

// Colour modes and colour permissions.
inline constexpr std::string_view kColorModes = "OVDSColorCorrection";
inline constexpr std::string_view kColorPermissions = "colorPermissions";
inline constexpr std::string_view kShowColorAccess = "showColorAccess";
inline constexpr std::string_view kBlackAndWhiteOnly = "bBWOnly";

// The media of a tray.
inline constexpr std::string_view kPageSize = "PageSize";
inline constexpr std::string_view kMediaType = "MediaType";

// The words in which the printer itself told its trays and supplies, beside their records: a record has no
// place for words that nobody knows.
// Lists of dictionaries of texts, one for each record of "input-trays-col" and of "colorant-housing-col", in
// their order; and one for each supply without a record.
inline constexpr std::string_view kToldTrays = "OVTrayWords";
inline constexpr std::string_view kToldSupplies = "OVSupplyWords";
inline constexpr std::string_view kToldOtherSupplies = "OVOtherSupplies";
// The keys of a dictionary, each there when the printer said it.
inline constexpr std::string_view kWordName = "name";
inline constexpr std::string_view kWordStatus = "status";
inline constexpr std::string_view kWordPaperSize = "paperSize";
inline constexpr std::string_view kWordPaperType = "paperType";

} // namespace orvan
