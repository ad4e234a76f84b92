#include "pages/Json.h"

// Its stack counts from a null pointer until it has room, which is harmless and which clang's
// sanitizer ends the program for.
#ifdef __clang__
#pragma clang attribute push(__attribute__((no_sanitize("pointer-overflow"))), apply_to = function)
#endif
#include <rapidjson/reader.h>
#ifdef __clang__
#pragma clang attribute pop
#endif

#include <algorithm>
#include <charconv>
#include <cmath>
#include <limits>
#include <utility>

namespace corvelle {

// ---- reading ----

// Takes the reader's events and hangs the items together.
struct JsonReader
{
    using Item = JsonTree::Item;

    std::vector<Item>& items;
    struct Open
    {
        qint32 index;
        qint32 lastChild = -1;
    };
    std::vector<Open> open;
    bool mayHoldSurrogates = false; // written as escapes, the halves apart
    const char* key = nullptr;
    quint32 keyLength = 0;

    // A half of a pair without the other is no character, so none of what is saved could be read
    // again.
    void replaceLoneSurrogates(char* text, quint32 length) const
    {
        if (!mayHoldSurrogates)
            return;
        for (char* at = text; at + 2 < text + length; ++at)
            if (at[0] == '\xED' && static_cast<unsigned char>(at[1]) >= 0xA0)
                std::copy_n("\xEF\xBF\xBD", 3, at);
    }

    bool add(JsonValue::Kind kind, const char* text = nullptr, quint32 length = 0)
    {
        if (items.size() >= size_t(std::numeric_limits<qint32>::max()))
            return false;
        const auto index = static_cast<qint32>(items.size());
        items.push_back({text, key, length, keyLength, -1, -1, kind});
        key = nullptr;
        keyLength = 0;
        if (!open.empty()) {
            Open& parent = open.back();
            qint32& link = parent.lastChild < 0 ? items[static_cast<size_t>(parent.index)].child
                                                : items[static_cast<size_t>(parent.lastChild)].next;
            link = index;
            parent.lastChild = index;
        }
        return true;
    }
    bool begin(JsonValue::Kind kind)
    {
        if (open.size() >= JsonTree::deepest || !add(kind))
            return false;
        open.push_back({static_cast<qint32>(items.size()) - 1});
        return true;
    }

    // The reader's names.
    bool Null() { return add(JsonValue::Kind::Null); }
    bool Bool(bool value) { return add(value ? JsonValue::Kind::True : JsonValue::Kind::False); }
    bool Int(int) { return false; }
    bool Uint(unsigned) { return false; }
    bool Int64(int64_t) { return false; }
    bool Uint64(uint64_t) { return false; }
    bool Double(double) { return false; }
    bool RawNumber(const char* text, rapidjson::SizeType length, bool)
    {
        return add(JsonValue::Kind::Number, text, length);
    }
    bool String(const char* text, rapidjson::SizeType length, bool)
    {
        replaceLoneSurrogates(const_cast<char*>(text), length); // it stands in the tree's own bytes
        return add(JsonValue::Kind::String, text, length);
    }
    bool StartObject() { return begin(JsonValue::Kind::Object); }
    bool Key(const char* text, rapidjson::SizeType length, bool)
    {
        replaceLoneSurrogates(const_cast<char*>(text), length);
        key = text;
        keyLength = length;
        return true;
    }
    bool EndObject(rapidjson::SizeType)
    {
        open.pop_back();
        return true;
    }
    bool StartArray() { return begin(JsonValue::Kind::Array); }
    bool EndArray(rapidjson::SizeType)
    {
        open.pop_back();
        return true;
    }
};

std::optional<JsonTree> JsonTree::parse(QByteArray text)
{
    // A NUL ends the reader's input, so one inside would hide what follows it.
    if (text.contains('\0') || text.size() > std::numeric_limits<qint32>::max())
        return std::nullopt;
    // The reader's own check goes beyond the end of a text that ends inside of a character.
    if (!text.isValidUtf8())
        return std::nullopt;
    if (text.startsWith("\xEF\xBB\xBF"))
        text.remove(0, 3);
    JsonTree tree;
    tree.m_text = std::move(text);
    tree.m_items.reserve(static_cast<size_t>(tree.m_text.size() / 48));
    rapidjson::InsituStringStream stream(tree.m_text.data());
    JsonReader handler{tree.m_items, {}};
    handler.mayHoldSurrogates = tree.m_text.contains("\\ud") || tree.m_text.contains("\\uD");
    rapidjson::Reader reader;
    constexpr unsigned flags = rapidjson::kParseInsituFlag | rapidjson::kParseIterativeFlag |
                               rapidjson::kParseNumbersAsStringsFlag;
    if (reader.Parse<flags>(stream, handler).IsError())
        return std::nullopt;
    return tree;
}

// ---- values ----

JsonValue::Kind JsonValue::kind() const
{
    return m_tree ? m_tree->m_items[static_cast<size_t>(m_index)].kind : Kind::None;
}

QByteArrayView JsonValue::utf8() const
{
    if (!m_tree)
        return {};
    const auto& item = m_tree->m_items[static_cast<size_t>(m_index)];
    return {item.text, static_cast<qsizetype>(item.length)};
}

QString JsonValue::string() const
{
    if (!isString())
        return {};
    const QByteArrayView bytes = utf8();
    QString text = QString::fromUtf8(bytes);
    if (bytes.startsWith("\xEF\xBB\xBF")) // there it is a character, and no mark of a file
        text.prepend(QChar::ByteOrderMark);
    return text;
}

QByteArrayView JsonValue::key() const
{
    if (!m_tree)
        return {};
    const auto& item = m_tree->m_items[static_cast<size_t>(m_index)];
    return {item.key, static_cast<qsizetype>(item.keyLength)};
}

int JsonValue::integer(int otherwise, int least, int most) const
{
    if (kind() != Kind::Number)
        return otherwise;
    const QByteArrayView digits = utf8();
    double value = 0;
    std::from_chars(digits.data(), digits.data() + digits.size(), value);
    return static_cast<int>(std::clamp(std::trunc(value), double(least), double(most)));
}

JsonValue JsonValue::firstChild() const
{
    if (!m_tree)
        return {};
    const qint32 child = m_tree->m_items[static_cast<size_t>(m_index)].child;
    return child < 0 ? JsonValue() : JsonValue(m_tree, child);
}

JsonValue JsonValue::next() const
{
    if (!m_tree)
        return {};
    const qint32 next = m_tree->m_items[static_cast<size_t>(m_index)].next;
    return next < 0 ? JsonValue() : JsonValue(m_tree, next);
}

JsonValue JsonValue::operator[](QByteArrayView name) const
{
    JsonValue found;
    if (isObject())
        for (JsonValue member = firstChild(); member.exists(); member = member.next())
            if (member.key() == name)
                found = member;
    return found;
}

// ---- writing ----

namespace {

constexpr char hexDigits[] = "0123456789abcdef";

void appendEscape(QByteArray& out, char c)
{
    switch (c) {
    case '"':
        out += "\\\"";
        break;
    case '\\':
        out += "\\\\";
        break;
    case '\b':
        out += "\\b";
        break;
    case '\f':
        out += "\\f";
        break;
    case '\n':
        out += "\\n";
        break;
    case '\r':
        out += "\\r";
        break;
    case '\t':
        out += "\\t";
        break;
    default:
        out += "\\u00";
        out += hexDigits[(static_cast<unsigned char>(c) >> 4) & 15];
        out += hexDigits[static_cast<unsigned char>(c) & 15];
    }
}

bool needsEscape(char c)
{
    return static_cast<unsigned char>(c) < 0x20 || c == '"' || c == '\\';
}

// The order of UTF-16 units differs from that of the bytes only where a surrogate pair meets a
// character above it.
bool keyLess(QByteArrayView left, QByteArrayView right)
{
    const auto plain = [](QByteArrayView key) {
        return std::none_of(
            key.begin(), key.end(), [](char c) { return static_cast<unsigned char>(c) >= 0xEE; });
    };
    if (plain(left) && plain(right))
        return left < right;
    return QString::fromUtf8(left) < QString::fromUtf8(right);
}

} // namespace

void appendJsonString(QByteArray& out, QByteArrayView utf8)
{
    out += '"';
    const char* from = utf8.begin();
    for (const char* at = from; at != utf8.end(); ++at)
        if (needsEscape(*at)) {
            out.append(from, at - from);
            appendEscape(out, *at);
            from = at + 1;
        }
    out.append(from, utf8.end() - from);
    out += '"';
}

void appendJsonString(QByteArray& out, QStringView text)
{
    appendJsonString(out, text.toUtf8());
}

// The members of the objects around it stand in `open`, whose room all objects share.
void JsonValue::appendTo(QByteArray& out, std::vector<JsonValue>& open) const
{
    switch (kind()) {
    case Kind::None:
    case Kind::Null:
        out += "null";
        return;
    case Kind::False:
        out += "false";
        return;
    case Kind::True:
        out += "true";
        return;
    case Kind::Number:
        out += utf8();
        return;
    case Kind::String:
        appendJsonString(out, utf8());
        return;
    case Kind::Array: {
        out += '[';
        bool first = true;
        for (JsonValue each = firstChild(); each.exists(); each = each.next()) {
            if (!std::exchange(first, false))
                out += ',';
            each.appendTo(out, open);
        }
        out += ']';
        return;
    }
    case Kind::Object: {
        const size_t first = open.size();
        for (JsonValue each = firstChild(); each.exists(); each = each.next())
            open.push_back(each);
        const size_t end = open.size();
        const auto members = open.begin() + static_cast<ptrdiff_t>(first);
        const auto isBefore = [](const JsonValue& l, const JsonValue& r) {
            return keyLess(l.key(), r.key());
        };
        if (!std::is_sorted(members, open.end(), isBefore))
            std::stable_sort(members, open.end(), isBefore);
        out += '{';
        for (size_t i = first; i < end; ++i) {
            if (i + 1 < end && open[i].key() == open[i + 1].key())
                continue;
            if (out.back() != '{')
                out += ',';
            const JsonValue member = open[i]; // its own members may move this room
            appendJsonString(out, member.key());
            out += ':';
            member.appendTo(out, open);
        }
        open.resize(first);
        out += '}';
        return;
    }
    }
}

QByteArray JsonValue::canonical() const
{
    QByteArray out;
    std::vector<JsonValue> open;
    appendTo(out, open);
    return out;
}

} // namespace corvelle
