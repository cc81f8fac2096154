// The URL table: service URLs by entry name and, optionally, area ("over_sea", ...).
//
// Read once, at the first Instance(), from two files of the same layout:
//   1. the shipped table "config/urls_config.xml" beside the host executable;
//   2. when present, the downloaded copy "cache/urls_config.xml" under the library's
//      application-data folder (Windows: %APPDATA%\Util; Linux: $XDG_DATA_HOME/Util, by default
//      ~/.local/share/Util).
// An entry of the copy wins over the shipped entry with the same name and area; entries only one
// file has are kept. A missing or damaged file contributes nothing.
//
// Layout (root name free; only "url" children are read):
//   <urls>
//     <url name="util">https://www.example.com/</url>
//     <url name="oobe_agreement_terms" area="over_sea">https://terms.example.com/</url>
//   </urls>
// The URL is the element's text, blanks (spaces, tabs, line ends) around it removed; entries without a name
// or without text are skipped; within one file the first entry of a name and area counts. Texts are UTF-8.
#pragma once

#include <map>
#include <string>
#include <utility>

#include "UtilExport.h"

struct UrlsManagerInspector;

namespace qda {
namespace util {

class UTIL_API UrlsManager {
 public:
  // The process-wide table, loaded on first use (thread-safe one-time initialisation); read-only
  // afterwards, so any thread may ask.
  static UrlsManager& Instance();

  // The URL of the entry without an area; "" when none is configured.
  std::string GetUrl(const std::string& name) const;
  // The URL of the entry for that area, else of the entry without an area; "" when neither
  // exists. An empty area is the same as GetUrl(name).
  std::string GetUrl(const std::string& name, const std::string& area) const;

  UrlsManager(const UrlsManager&) = delete;
  UrlsManager& operator=(const UrlsManager&) = delete;

 private:
  friend struct ::UrlsManagerInspector;  // the tests and utl load given files through it

  UrlsManager();  // the shipped table and the cached copy
  UrlsManager(const std::string& shippedPath, const std::string& cachePath);
  void LoadTable(const std::string& path);  // entries of this file replace earlier ones

  std::map<std::pair<std::string, std::string>, std::string> urls_;  // (area, name) -> URL
};

}  // namespace util
}  // namespace qda
