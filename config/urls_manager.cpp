// qda::util::UrlsManager: the URL table from the shipped file and its cached copy.
#include "UrlsManager.h"

#include <exception>

#include "ZnXml.h"
#include "config/module_path.h"

namespace qda {
namespace util {

namespace {

// The text without the blanks (spaces, tabs, line ends) around it, so entries may be indented.
std::string TrimBlanks(const std::string& text) {
  const char* const blanks = " \t\r\n";
  const std::size_t first = text.find_first_not_of(blanks);
  if (first == std::string::npos) return std::string();
  return text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

}  // namespace

UrlsManager& UrlsManager::Instance() {
  static UrlsManager instance;
  return instance;
}

UrlsManager::UrlsManager()
    : UrlsManager(DE::detail::JoinPath(DE::detail::HostExecutableFolder(), {"config", "urls_config.xml"}),
                  DE::detail::JoinPath(DE::detail::LibraryAppDataFolder(), {"cache", "urls_config.xml"})) {}

UrlsManager::UrlsManager(const std::string& shippedPath, const std::string& cachePath) {
  LoadTable(shippedPath);
  LoadTable(cachePath);  // the newer, downloaded copy wins entry by entry
}

void UrlsManager::LoadTable(const std::string& path) {
  if (path.empty()) return;
  try {
    ZnXMLDocument doc;
    if (doc.LoadFile(path) != ZnXmlSuccess) return;
    std::map<std::pair<std::string, std::string>, std::string> table;
    const ZnXmlElement root = doc.RootElement();
    for (ZnXmlElement url = root.FirstNode("url"); !url.IsElementNull();
         url = url.NextSiblingElement("url")) {
      const std::string name = url.Attribute("name");
      const std::string text = TrimBlanks(url.Value());
      if (name.empty() || text.empty()) continue;
      table.emplace(std::make_pair(url.Attribute("area"), name), text);  // first one counts
    }
    for (auto& entry : table) urls_[entry.first] = std::move(entry.second);
  } catch (const std::exception&) {
    // A file that cannot be taken in whole contributes nothing.
  }
}

std::string UrlsManager::GetUrl(const std::string& name) const { return GetUrl(name, std::string()); }

std::string UrlsManager::GetUrl(const std::string& name, const std::string& area) const {
  auto found = urls_.find(std::make_pair(area, name));
  if (found == urls_.end() && !area.empty()) found = urls_.find(std::make_pair(std::string(), name));
  return found != urls_.end() ? found->second : std::string();
}

}  // namespace util
}  // namespace qda
