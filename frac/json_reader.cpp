#include <algorithm>
#include <array>
#include <set>

#include "frac/json_document.h"
#include "frac/json_entry.h"
#include "frac/json_fields.h"
#include "frac/json_tokens.h"

using nlohmann::json;

namespace {

// What a text may look like in a message: short, and nothing in it that drives a terminal.
std::string shown(std::string_view text) {
    constexpr std::size_t MOST = 40;
    std::string part(text.substr(0, MOST));
    for (char& c : part) {
        if (c < ' ' || c > '~') c = '?';
    }
    return text.size() > MOST ? part + "..." : part;
}

// The library's words about a syntax error, without its own idea of the place and without the token
// that it read last, which may be as long as the text and holds its bytes.
std::string syntaxMessage(const std::string& what, const std::string& lastToken) {
    std::string message = what.substr(std::min(what.find("syntax error"), what.size()));
    const std::string told = "; last read: '" + lastToken + "'";
    const std::size_t at = message.find(told);
    if (at != std::string::npos) message.erase(at, told.size());
    return message;
}

std::string listOf(std::span<const Key> keys) {
    std::string list;
    for (const Key& key : keys) {
        list += (list.empty() ? "\"" : ", \"") + std::string(key.name) + '"';
    }
    return list;
}

// Takes what the parser reads and builds the entries; throws JsonError at the first thing that does
// not belong where it stands. The text outlives it.
class Reader final : public nlohmann::json_sax<json> {
  public:
    explicit Reader(std::string_view ofText) : text(ofText), walk(ofText) {}

    Document document;

    bool null() override { return scalar(false); }
    bool boolean(bool) override { return scalar(false); }
    bool number_integer(number_integer_t value) override;
    bool number_unsigned(number_unsigned_t value) override {
        return number(static_cast<double>(value));
    }
    bool number_float(number_float_t value, const string_t&) override { return number(value); }
    bool string(string_t& value) override { return scalar(takeText(draft, awaited, value)); }
    bool binary(binary_t&) override { return scalar(false); }
    bool start_object(std::size_t) override { return open(!keysOf(awaited).empty()); }
    bool start_array(std::size_t) override { return open(firstIn(awaited) != Field::none); }
    bool key(string_t& name) override;
    bool end_object() override { return close(); }
    bool end_array() override { return close(); }
    bool parse_error(std::size_t position, const std::string& lastToken,
                     const nlohmann::detail::exception& error) override;

  private:
    // Keys that an object has had so far, by the object.
    using SeenKeys = std::array<FieldSet, static_cast<std::size_t>(Field::count)>;

    [[noreturn]] void refuseAt(std::size_t offset, const std::string& message) const;
    [[noreturn]] void refuse(const std::string& message) const { refuseAt(walk.begin(), message); }
    [[noreturn]] void refuseValue() const;

    bool number(double value);
    bool scalar(bool taken);
    bool open(bool expected);
    bool close();
    void requireKeys() const;
    void requirePlace() const;
    void finishEntry();
    void leave(Field field);
    FieldSet& seenIn(Field object) { return seen[static_cast<std::size_t>(object)]; }

    bool inRender() const { return !renderKeys.empty(); }
    void openRender();
    void closeRender();
    void boundRender() const;
    void takeRenderKey(const std::string& name);

    std::string_view text;
    TokenWalk walk;
    Field container = Field::none;    // what the next token stands in
    Field awaited = Field::document;  // the value that must come next; none: a key or an end
    SeenKeys seen{};
    EntryDraft draft;
    std::vector<std::set<std::string>> renderKeys;  // of all that is open from "render" down
    std::size_t renderStart = 0;
    std::size_t constantAt = 0;  // offset of "c", or of what stands in it, last walked to
};

void Reader::refuseAt(std::size_t offset, const std::string& message) const {
    const TextPlace place = placeOf(text, offset);
    throw JsonError(place.line, place.column, message);
}

void Reader::refuseValue() const {
    refuse("expected " + expectationOf(awaited) + ", found " + shown(walk.token()));
}

// ---- values

// An integer has no negative zero, and the numbers of views have.
bool Reader::number_integer(number_integer_t value) {
    return number(value == 0 ? -0.0 : static_cast<double>(value));
}

bool Reader::number(double value) {
    const bool version = awaited == Field::tessary && value == 1;
    return scalar(version || takeNumber(draft, awaited, value));
}

bool Reader::scalar(bool taken) {
    walk.next();
    if (inRender()) return true;
    if (!taken) refuseValue();
    if (container == Field::constant) constantAt = walk.begin();
    leave(awaited);
    return true;
}

// A value of this field is complete.
void Reader::leave(Field field) {
    container = containerOf(field);
    awaited = nextAfter(field);
}

// ---- objects and arrays

bool Reader::open(bool expected) {
    walk.next();
    if (inRender() || awaited == Field::render) {
        openRender();
        return true;
    }
    if (!expected) refuseValue();
    if (awaited == Field::entry) draft = {};
    seenIn(awaited) = 0;
    container = awaited;
    awaited = firstIn(container);
    return true;
}

bool Reader::close() {
    walk.next();
    if (inRender()) {
        closeRender();
        return true;
    }
    requireKeys();
    if (awaited != Field::none && awaited != Field::entry) refuseValue();
    if (container == Field::entry) finishEntry();
    leave(container);
    return true;
}

void Reader::requireKeys() const {
    const FieldSet present = seen[static_cast<std::size_t>(container)];
    for (const Key& key : keysOf(container)) {
        if (key.needed && (present & only(key.field)) == 0) {
            refuse("expected \"" + std::string(key.name) + "\" before the end of this object");
        }
    }
}

void Reader::requirePlace() const {
    const FieldSet present = seen[static_cast<std::size_t>(Field::entry)];
    const auto has = [present](Field field) { return (present & only(field)) != 0; };
    const std::string end = " before the end of this object";
    if (has(Field::center) != has(Field::width)) {
        refuse(std::string("expected ") + (has(Field::center) ? "\"width\"" : "\"center\"") + end);
    }
    if (!has(Field::view) && !has(Field::center)) {
        refuse(R"(expected "view", or "center" and "width",)" + end);
    }
    if (has(Field::view) && draft.hasExactConstant()) {
        refuseAt(constantAt, "expected " + expectationOf(Field::cx) +
                                 R"(; decimal texts go with "center" and "width")");
    }
}

void Reader::finishEntry() {
    requirePlace();
    document.entries.push_back(finishedEntry(draft));
}

// ---- keys

// What an entry has either of.
FieldSet besides(Field field) {
    const FieldSet exact = only(Field::center) | only(Field::width);
    if (field == Field::view) return exact;
    return (only(field) & exact) != 0 ? only(Field::view) : FieldSet{0};
}

// A name has two keys, of which an entry may have one.
FieldSet sameAs(Field field) {
    const FieldSet names = only(Field::name) | only(Field::nameBytes);
    return (only(field) & names) != 0 ? names : only(field);
}

bool Reader::key(string_t& name) {
    walk.next();
    if (inRender()) {
        takeRenderKey(name);
        return true;
    }
    const auto keys = keysOf(container);
    const auto found =
        std::find_if(keys.begin(), keys.end(), [&](const Key& key) { return key.name == name; });
    if (found == keys.end()) {
        refuse("unknown key " + shown(walk.token()) + ", expected one of " + listOf(keys));
    }
    if ((seenIn(container) & sameAs(found->field)) != 0) {
        refuse("a second " + shown(walk.token()) + ", expected one in an object");
    }
    if ((seenIn(container) & besides(found->field)) != 0) {
        refuse(shown(walk.token()) +
               R"(, expected either "view" or both "center" and "width" in an entry)");
    }
    seenIn(container) |= only(found->field);
    awaited = found->field;
    return true;
}

// ---- "render", which belongs to whom it concerns

void Reader::openRender() {
    if (!inRender()) {
        if (walk.token() != "{") refuseValue();
        renderStart = walk.begin();
    }
    if (renderKeys.size() == DEEPEST_RENDER) refuse("expected at most 16 levels in \"render\"");
    boundRender();
    renderKeys.emplace_back();
}

void Reader::closeRender() {
    boundRender();
    renderKeys.pop_back();
    if (inRender()) return;
    document.render = json::parse(text.substr(renderStart, walk.end() - renderStart));
    leave(Field::render);
}

void Reader::takeRenderKey(const std::string& name) {
    boundRender();
    if (renderKeys.back().insert(name).second) return;
    refuse("a second " + shown(walk.token()) + ", expected one in an object");
}

void Reader::boundRender() const {
    if (walk.end() - renderStart <= LONGEST_RENDER) return;
    refuseAt(renderStart, "expected at most 1 MiB in \"render\"");
}

// ---- what is no JSON

bool Reader::parse_error(std::size_t position, const std::string& lastToken,
                         const nlohmann::detail::exception& error) {
    // The library counts the byte it stopped at, and one more past the end of the text.
    const std::size_t last = std::min(position - 1, text.size());
    const std::size_t token = std::min(walk.ahead(), last);
    const std::string message = syntaxMessage(error.what(), lastToken);
    if (message.empty()) refuseAt(token, "expected a number that a double can hold");
    const bool wholeToken = message.find("- unexpected ") != std::string::npos;
    refuseAt(wholeToken ? token : last, message);
}

}  // namespace

Document readDocument(std::string_view text) {
    if (text.size() > LONGEST_DOCUMENT) throw JsonError(1, 1, "expected at most 1 GiB");
    // Of no text at all versions of the library make different things.
    if (text.empty()) throw JsonError(1, 1, "syntax error - unexpected end of input; expected '{'");
    Reader reader(text);
    json::sax_parse(text, &reader);
    return std::move(reader.document);
}
