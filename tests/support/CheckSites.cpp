#include "support/CheckSites.h"

#include <algorithm>
#include <cctype>
#include <cstddef>
#include <filesystem>
#include <map>
#include <regex>
#include <stdexcept>
#include <vector>

#include "support/ReferenceField.h"

namespace support {
namespace {

bool isOfWord(char c) { return std::isalnum(static_cast<unsigned char>(c)) || c == '_'; }

/// The text with spaces for comments, directives and what stands in strings.
std::string codeOf(std::string text) {
  static const std::regex noCode(
      R"re(//[^\n]*|"(?:\\.|[^"\\\n])*"|\n *#(?:[^\n]*\\\n)*[^\n]*|/\*(?:[^*]|\*(?!/))*\*/)re");
  const std::string whole = text;
  for (std::sregex_iterator match(whole.begin(), whole.end(), noCode), end; match != end; ++match) {
    const auto first = static_cast<std::size_t>(match->position());
    const bool isString = whole[first] == '"';
    for (std::size_t i = first; i < first + static_cast<std::size_t>(match->length()); ++i)
      if (text[i] != '\n' && !(isString && text[i] == '"')) text[i] = ' ';
  }
  return text;
}

/// A source file as it is written, and its code alone, character by character in the same places.
struct Source {
  std::string name;  // from src on
  std::string text;
  std::string code;

  int lineAt(std::size_t place) const {
    const auto end = text.begin() + static_cast<std::ptrdiff_t>(place);
    return 1 + static_cast<int>(std::count(text.begin(), end, '\n'));
  }

  /// Where the code matches.
  std::vector<std::smatch> all(const std::string& pattern) const {
    const std::regex expression(pattern);
    return {std::sregex_iterator(code.begin(), code.end(), expression), std::sregex_iterator()};
  }
};

std::vector<Source> sources() {
  const std::filesystem::path root = std::filesystem::canonical(testFile("../src"));
  std::vector<Source> all;
  for (const auto& entry : std::filesystem::recursive_directory_iterator(root)) {
    const std::string extension = entry.path().extension().string();
    const std::string name = entry.path().lexically_relative(root).string();
    if (name.find("emulation/") == 0) continue;
    if (extension != ".h" && extension != ".cpp" && extension != ".cu") continue;
    const std::string text = contents(entry.path().string());
    all.push_back({name, text, codeOf(text)});
  }
  return all;
}

/// A call as it is written: from its name to its closing bracket.
struct Written {
  std::string function;
  std::size_t first, last;
};

/// The innermost call among whose arguments `place` stands.
Written callAround(const Source& source, std::size_t place) {
  const std::string& code = source.code;
  int depth = 1;
  std::size_t open = place;
  while (depth > 0) {
    if (open == 0) throw std::runtime_error(source.name + ": a location outside of any call");
    const char c = code[--open];
    depth += c == ')' ? 1 : c == '(' ? -1 : 0;
  }
  std::size_t name = open;
  while (name > 0 && isOfWord(code[name - 1])) --name;
  std::size_t close = open + 1;
  for (depth = 1; depth > 0; ++close)
    depth += code.at(close) == '(' ? 1 : code[close] == ')' ? -1 : 0;
  return {code.substr(name, open - name), name, close};
}

/// The last text among a call's arguments.
std::string textIn(const Source& source, const Written& call) {
  const std::size_t end = source.code.rfind('"', call.last);
  const std::size_t begin = source.code.rfind('"', end - 1);
  if (begin == std::string::npos || begin < call.first)
    throw std::runtime_error(source.name + ": a check without a text");
  return source.text.substr(begin + 1, end - begin - 1);
}

bool isCheck(const std::string& function) {
  return function == "callCheck" || function == "stageCheck";
}

/// Whether a name that stands before a bracket is declared there rather than called.
bool isDeclaration(const Source& source, std::size_t name) {
  std::size_t end = name;
  while (end > 0 && std::isspace(static_cast<unsigned char>(source.code[end - 1]))) --end;
  std::size_t begin = end;
  while (begin > 0 && isOfWord(source.code[begin - 1])) --begin;
  const std::string before = source.code.substr(begin, end - begin);
  return !before.empty() && before != "return" && before != "else" && before != "do" &&
         before != "throw";
}

/// The checks and the calls that hand them a location, which is HERE or one of the file's own.
void addSites(const Source& source, const std::string& textOfForwarded,
              std::set<CheckSite>& sites) {
  std::smatch match;
  std::map<std::string, CheckSite> own;
  static const std::regex location(R"re(SourceLocation (\w+)\{"([^"]*)", (\d+)\};)re");
  for (std::sregex_iterator found(source.text.begin(), source.text.end(), location), end;
       found != end; ++found)
    own[(*found)[1]] = {(*found)[2], std::stoi((*found)[3]), false, ""};
  static const std::regex sourceFile(R"re(sourceFile = "([^"]*)")re");
  if (std::regex_search(source.text, match, sourceFile)) own["HERE"] = {match[1], 0, false, ""};

  for (const auto& [name, place] : own)
    for (const std::smatch& use : source.all("\\b" + name + "\\b(?!\\{)")) {
      const auto at = static_cast<std::size_t>(use.position());
      const Written call = callAround(source, at);
      if (call.function.find("fail") == 0)
        continue;  // of a condition that is none of the runtime's
      CheckSite site = place;
      if (name == "HERE") site.line = source.lineAt(at);
      site.isStage = call.function == "stageCheck";
      site.text = isCheck(call.function) ? textIn(source, call) : textOfForwarded;
      if (!sites.insert(site).second)
        throw std::runtime_error(source.name + ": two checks report line " +
                                 std::to_string(site.line));
    }
}

}  // namespace

std::set<CheckSite> checkSites() {
  const std::vector<Source> all = sources();
  // One check stands for those who hand it a location of theirs.
  std::string forwarded;
  for (const Source& source : all)
    for (const std::smatch& use : source.all(", location\\)")) {
      const Written call = callAround(source, static_cast<std::size_t>(use.position()));
      if (!isCheck(call.function)) continue;
      if (!forwarded.empty()) throw std::runtime_error("two checks take a location: say which");
      forwarded = textIn(source, call);
    }
  std::set<CheckSite> sites;
  for (const Source& source : all) addSites(source, forwarded, sites);
  return sites;
}

std::multiset<std::string> uncheckedCalls() {
  std::multiset<std::string> calls;
  for (const Source& source : sources()) {
    std::vector<Written> checks;
    for (const std::smatch& check : source.all("\\b(callCheck|stageCheck)\\("))
      checks.push_back(
          callAround(source, static_cast<std::size_t>(check.position() + check.length())));
    for (const std::smatch& call :
         source.all("(?:\\b(cuda[A-Z]\\w*|launch)|[.>](allocate|free))(?:<[\\w.:, ]*>)?\\(")) {
      const auto name = static_cast<std::size_t>(call.position());
      const bool isChecked = std::any_of(checks.begin(), checks.end(), [&](const Written& check) {
        return check.first < name && name < check.last;
      });
      if (!isChecked && !isDeclaration(source, name))
        calls.insert(source.name + " " + call[1].str() + call[2].str());
    }
  }
  return calls;
}

}  // namespace support
