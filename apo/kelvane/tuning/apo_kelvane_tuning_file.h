// Which tuning file is taken, and its opening.
#pragma once

#include "audioapi/audio_api_log.h"

#include <windows.h>

#include <string>

namespace tinyxml2
{
class XMLDocument;
class XMLElement;
} // namespace tinyxml2

// The path of the file to load: in debug mode the newest of the debug folder; then the installed one made for the
// library of that version; then the newest installed one. Empty if there is none.
std::string FindConfigFile(INT32 iDebugMode, const std::string& strAlgoVersion);

// These log at the caller's site.
// Parses the file; its root element, or null. The element lives as long as the document.
const tinyxml2::XMLElement* OpenConfigFile(tinyxml2::XMLDocument& oDocument, const std::string& strPath,
                                           const AudioLogSite& oSite);
// The first child of that name, or null.
const tinyxml2::XMLElement* FindTag(const tinyxml2::XMLElement* pXmlElement, const std::string& strTag,
                                    const AudioLogSite& oSite);
// An element without which the file is of no use; the second line tells which file.
void ReportMissingTag(const char* pText, const std::string& strPath, const AudioLogSite& oSite);
