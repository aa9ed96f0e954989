// The command table, the command-line parser and the help texts, all driven
// by the same table so that --help always lists what the parser takes.
#include <charconv>
#include <cmath>
#include <ostream>
#include <sstream>

#include "tools/dispc/command_p.h"

namespace dispctool {

namespace {

constexpr Option kRenderOptions[] = {
    {"output", "OUT", "the picture: .png, .svg or .pdf (also -o OUT)"},
    {"size", "WxH", "the picture's size in pels (default 800x600)"},
    {"scale", "S", "pels per client unit (default: fit the drawing)"},
    {"offset", "X,Y", "where the client origin lands, in pels\n(default: the drawing centred)"},
    {"layer", "main|overlay|both",
     "the layers a sketch or graphic list is drawn on\n(default both: each layer with its own "
     "records,\nrecords for both layers on each)"},
    {"y", "up|down", "which way client y points (default: down for\nsketches and graphic lists, up for SMD)"},
    {"background", "IMAGE.png", "an image to draw over, shown in grey; the picture\ntakes its size"},
    {"antialias", nullptr, "smooth edges (default: every pel drawn or not, as\non an inspection display)"},
};

constexpr Option kSynthOptions[] = {
    {"output", "OUT", "the image: .png or .pgm (also -o OUT)"},
    {"size", "WxH", "the image's size in pels (default 800x600)"},
    {"pel", "SIZE", "the size of one pel in client units (default: fit\nthe model)"},
    {"y", "up|down", "which way client y points (default up)"},
};

constexpr Option kValidateOptions[] = {
    {"scale", "S", "the scale the segment lengths are measured under\n(default 1)"},
};

constexpr Command kCommands[] = {
    {"info",
     "FILE",
     "what the file holds: kind, classes, counts, bounding box",
     "Prints the kind of the file and the classes it holds, the number of records\n"
     "(sketch), graphics (graphic list), polys, vertices and sub-model labels\n"
     "(poly or model), and the bounding box: in client units, and for a sketch\n"
     "the pels it touches played on an identity tablet.\n",
     {},
     runInfo},
    {"dump",
     "FILE",
     "the content, one record, graphic or vertex a line",
     "A sketch: one line per record (offset, opcode and class, layer, colour,\n"
     "any properties record, then the payload's fields).\n"
     "A graphic list: one line per graphic (index, class, pen colour and\n"
     "properties, bounding box in client units).\n"
     "A poly or model: a line per poly (name, closed or open, direction,\n"
     "labels, colours, weight), then a line per vertex: point, rounding\n"
     "radius, span of the segment ending there (degrees; 0 is straight), the\n"
     "shares of the previous and next segment its rounding may use, its label\n"
     "and the length tolerance of the segment ending there (none, or nominal,\n"
     "lower and upper as limits, offsets or percentages).\n",
     {},
     runDump},
    {"render", "FILE -o OUT.(png|svg|pdf) [options]", "draws the file into a PNG, SVG or PDF picture",
     "Draws a sketch (played on the chosen layers), a graphic list (drawn on the\n"
     "chosen layers), or a poly or model (its wireframe with direction arrows,\n"
     "on the main layer) on the Cairo device.\n"
     "\n"
     "Client units map to pels as  x' = S x + X  and, with y down,  y' = S y + Y\n"
     "or, with y up,  y' = -S y + Y.  Sketches and graphic lists are taken with y\n"
     "down (their units are pels on an identity tablet); polys and models with\n"
     "y up, as package drawings are; --y overrides that. By default S and (X, Y)\n"
     "fit the drawing's bounding box into the picture, centred, a margin of 5 %\n"
     "of the smaller side around it; --scale gives S (the box still centred),\n"
     "--offset gives (X, Y).\n",
     kRenderOptions, runRender},
    {"synth", "FILE -o OUT.(png|pgm) [options]", "the synthetic grey image of a poly or model",
     "Draws the synthetic grey image of a poly or model (its filled outlines in\n"
     "their synthetic grey over the first poly's background grey), the model\n"
     "centred in the image, y up by default. Client units map to pels as for\n"
     "render, with S = 1 / --pel, or the scale that fits the model when --pel\n"
     "is not given.\n",
     kSynthOptions, runSynth},
    {"validate", "FILE [--scale S]", "validates every poly and checks segment tolerances",
     "Validates every poly of a model (or the one poly) as a fresh edit would,\n"
     "even where the file holds an outline that the library refuses to load,\n"
     "and names the poly, the vertex at which building it vertex by vertex is\n"
     "refused (or the closing segment) and the library's message. Then lists\n"
     "the segments whose length, measured under the scale, is out of their\n"
     "tolerance (segment k ends at vertex k). Exits 1 when anything fails.\n",
     kValidateOptions, runValidate},
};

const Option* findOption(const Command& command, const std::string& name) {
  for (const Option& o : command.options)
    if (name == o.name) return &o;
  return nullptr;
}

[[noreturn]] void badValue(const std::string& option, const std::string& value, const char* wanted) {
  throw UsageError("bad value '" + value + "' for --" + option + ": " + wanted);
}

// The whole text as a finite double.
std::optional<double> parseNumber(const std::string& text) {
  double v = 0;
  const char* end = text.data() + text.size();
  const auto [at, error] = std::from_chars(text.data(), end, v);
  if (error != std::errc() || at != end || !std::isfinite(v)) return std::nullopt;
  return v;
}

}  // namespace

// --- the command line ---

Invocation::Invocation(const Command& command, std::span<const std::string> args) : command_(&command) {
  for (std::size_t i = 0; i < args.size(); ++i) {
    std::string arg = args[i];
    if (arg == "-o") arg = "--output";
    if (arg.size() < 2 || arg.compare(0, 2, "--") != 0 || arg == "--") {
      if (!arg.empty() && arg[0] == '-' && arg != "-") throw UsageError("unknown option " + arg);
      if (!file_.empty()) throw UsageError("one FILE only (" + file_ + " and " + arg + ")");
      file_ = arg;
      continue;
    }
    std::string name = arg.substr(2);
    std::optional<std::string> value;
    if (const auto eq = name.find('='); eq != std::string::npos) {
      value = name.substr(eq + 1);
      name.resize(eq);
    }
    const Option* option = findOption(command, name);
    if (option == nullptr) throw UsageError("unknown option --" + name);
    if (given_.count(name)) throw UsageError("--" + name + " given twice");
    if (option->value != nullptr && !value) {
      if (i + 1 >= args.size()) throw UsageError("--" + name + " needs a value (" + option->value + ")");
      value = args[++i];
    }
    if (option->value == nullptr && value) throw UsageError("--" + name + " takes no value");
    given_[name] = value.value_or("");
  }
  if (file_.empty()) throw UsageError("no FILE given");
}

std::optional<std::string> Invocation::value(const std::string& name) const {
  const auto it = given_.find(name);
  if (it == given_.end()) return std::nullopt;
  return it->second;
}

std::string Invocation::required(const std::string& name) const {
  if (auto v = value(name)) return *v;
  throw UsageError("--" + name + " is required");
}

std::optional<double> Invocation::positive(const std::string& name) const {
  const auto text = value(name);
  if (!text) return std::nullopt;
  const auto v = parseNumber(*text);
  if (!v || *v <= 0.0) badValue(name, *text, "a positive number");
  return v;
}

std::optional<kcVector<2>> Invocation::point(const std::string& name) const {
  const auto text = value(name);
  if (!text) return std::nullopt;
  const auto comma = text->find(',');
  if (comma == std::string::npos) badValue(name, *text, "X,Y");
  const auto x = parseNumber(text->substr(0, comma));
  const auto y = parseNumber(text->substr(comma + 1));
  if (!x || !y) badValue(name, *text, "X,Y, two numbers");
  return kcVector<2>(*x, *y);
}

std::optional<kcVector<2>> Invocation::size(const std::string& name) const {
  const auto text = value(name);
  if (!text) return std::nullopt;
  long w = 0, h = 0;
  const char* end = text->data() + text->size();
  const auto [x, e1] = std::from_chars(text->data(), end, w);
  if (e1 != std::errc() || x == end || *x != 'x') badValue(name, *text, "WxH");
  const auto [at, e2] = std::from_chars(x + 1, end, h);
  if (e2 != std::errc() || at != end) badValue(name, *text, "WxH");
  if (w < 1 || h < 1 || w > kMaxPicturePels || h > kMaxPicturePels)
    badValue(name, *text, "each side 1 to 32767 pels");
  return kcVector<2>(static_cast<double>(w), static_cast<double>(h));
}

std::optional<std::string> Invocation::choice(const std::string& name, const std::string& choices) const {
  const auto text = value(name);
  if (!text) return std::nullopt;
  std::istringstream words(choices);
  for (std::string word; std::getline(words, word, '|');)
    if (word == *text) return text;
  badValue(name, *text, choices.c_str());
}

// --- the table ---

std::span<const Command> commands() { return kCommands; }

const Command* findCommand(const std::string& name) {
  for (const Command& c : kCommands)
    if (name == c.name) return &c;
  return nullptr;
}

// --- help ---

void printToolHelp(std::ostream& out) {
  out << "usage: dispc COMMAND FILE [options]\n"
         "       dispc COMMAND --help\n"
         "       dispc --version\n"
         "\n"
         "Looks into a dispc file (a sketch, a graphic list, an SMD poly or an SMD\n"
         "model, as kfSave writes it), draws it and checks it.\n"
         "\n"
         "commands:\n";
  for (const Command& c : kCommands) {
    std::string name = c.name;
    name.resize(10, ' ');
    out << "  " << name << c.summary << '\n';
  }
  out << "\n"
         "Exit status: 0 on success; 1 when the file cannot be read or is damaged,\n"
         "an output cannot be written, or validation fails; 2 for a usage error.\n";
}

void printCommandHelp(const Command& command, std::ostream& out) {
  out << "usage: dispc " << command.name << ' ' << command.synopsis << "\n\n"
      << command.details << "\noptions:\n";
  constexpr std::size_t kHelpColumn = 28;
  for (const Option& o : command.options) {
    std::string left = std::string("--") + o.name + (o.value ? std::string(" ") + o.value : "");
    // The help starts on the next line when the option leaves it no room.
    if (left.size() + 4 > kHelpColumn)
      left += "\n" + std::string(kHelpColumn - 2, ' ');
    else
      left.resize(kHelpColumn - 2, ' ');
    // Continuation lines of the help line up under its first.
    std::string help = o.help;
    for (auto nl = help.find('\n'); nl != std::string::npos; nl = help.find('\n', nl + 1))
      help.insert(nl + 1, std::string(kHelpColumn, ' '));
    out << "  " << left << help << '\n';
  }
  out << "  --help" << std::string(kHelpColumn - 8, ' ') << "this text\n";
}

}  // namespace dispctool
