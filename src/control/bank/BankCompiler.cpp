// corvane_bank FACTORY_FOLDER OUTPUT: turns the text of the factory bank into the table behind
// `factoryPreset`. A fault ends the build with its file and line.

#include <fmt/format.h>

#include <algorithm>
#include <fstream>
#include <iostream>
#include <iterator>
#include <map>

#include "control/bank/BankText.h"
#include "core/ParameterBank.h"

namespace corvane::bank {
namespace {

struct Compiled {
  std::vector<BankPreset> presets;  ///< by place
  std::map<int, std::string> categories;
  std::vector<DesignerRow> designers;
};

std::string readAll(const std::string& path) {
  std::ifstream in(path, std::ios::binary);
  if (!in) throw std::runtime_error(path + ": cannot be read");
  return {std::istreambuf_iterator<char>(in), {}};
}

Compiled compile(const std::string& folder) {
  Compiled result;
  const std::string designersFile = folder + "/designers.txt", placesFile = folder + "/places.txt";
  result.designers = parseDesigners(designersFile, readAll(designersFile));
  const auto runs = parsePlaces(placesFile, readAll(placesFile));

  std::map<std::string, BankFile> files;
  std::map<std::string, std::size_t> used;
  std::vector<BankPreset> starts;  // what others may be like: the presets of the first file
  for (const PlaceRun& run : runs) {
    if (files.contains(run.file)) continue;
    const std::string path = folder + "/" + run.file + ".bank";
    BankFile file = parseBank(path, readAll(path), result.designers, starts);
    if (files.empty()) starts = file.presets;
    if (file.category >= 0 && !result.categories.emplace(file.category, file.categoryName).second)
      throw BankError(path, 1, fmt::format("category {} stands in two files", file.category));
    files.emplace(run.file, std::move(file));
  }
  for (const PlaceRun& run : runs) {
    const auto& presets = files.at(run.file).presets;
    std::size_t& next = used[run.file];
    for (int place = run.first; place <= run.last; ++place) {
      if (next == presets.size())
        throw BankError(placesFile, run.line, fmt::format("{}.bank has only {} presets", run.file, next));
      result.presets.push_back(presets[next++]);
    }
  }
  for (const auto& [name, file] : files)
    if (used[name] != file.presets.size())
      throw BankError(placesFile, runs.back().line,
                      fmt::format("{} of the {} presets of {}.bank have no place",
                                  file.presets.size() - used[name], file.presets.size(), name));
  if (!result.categories.empty() &&
      result.categories.rbegin()->first + 1 != static_cast<int>(result.categories.size()))
    throw BankError(placesFile, 1, "the categories are not numbered without a gap");
  return result;
}

std::string literal(std::string_view text) {
  std::string out = "\"";
  for (const char c : text) {
    if (c == '"' || c == '\\') out += '\\';
    out += c;
  }
  return out + '"';
}

void emit(const Compiled& bank, std::ostream& out) {
  std::string values, entries;
  std::size_t count = 0;
  for (const BankPreset& preset : bank.presets) {
    const std::size_t first = count;
    for (int id = 0; id < kParameters; ++id) {
      const double value = preset.values[static_cast<std::size_t>(id)];
      if (value == parameterDefault(id)) continue;
      values += fmt::format("    {{{}, {}}},\n", id, value);
      ++count;
    }
    entries += fmt::format("    {{{}, {}, {}, {}, {}}},\n", literal(preset.name), preset.category,
                           preset.designer, first, count - first);
  }
  out << "// Made from factory/ by the build.\n"
      << "constexpr FactoryValue kFactoryValues[] = {\n"
      << values << "};\n"
      << "constexpr FactoryEntry kFactoryEntries[] = {\n"
      << entries << "};\n"
      << "constexpr const char* kFactoryCategories[] = {\n";
  for (const auto& [number, name] : bank.categories) out << "    " << literal(name) << ",\n";
  out << "};\nconstexpr Designer kFactoryDesigners[] = {\n";
  for (std::size_t row = 0; row < bank.designers.size(); ++row)
    out << fmt::format("    {{{}, {}, {}}},\n", literal(bank.designers[row].name),
                       literal(bank.designers[row].link), 90001 + row);
  out << "};\n";
}

}  // namespace
}  // namespace corvane::bank

int main(int argc, char** argv) {
  if (argc != 3) {
    std::cerr << "usage: corvane_bank FACTORY_FOLDER OUTPUT\n";
    return 2;
  }
  try {
    const auto bank = corvane::bank::compile(argv[1]);
    std::ofstream out(argv[2], std::ios::binary);
    corvane::bank::emit(bank, out);
    out.flush();
    if (out) return 0;
    std::cerr << argv[2] << ": cannot be written\n";
  } catch (const std::exception& error) {
    std::cerr << error.what() << '\n';
  }
  return 1;
}
