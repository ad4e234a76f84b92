// JSON as pages store it: read in one pass into an arena, and written in one canonical form.
//
// Numbers keep their spelling; of equal keys the last one counts. Values are views into the tree,
// which must outlive them. Any thread.
#pragma once

#include <QByteArray>
#include <QString>

#include <optional>
#include <vector>

namespace corvelle {

class JsonTree;

// One value of a tree, or no value at all: asking that is allowed and gives what is empty.
class JsonValue
{
public:
    enum class Kind : unsigned char { None, Null, False, True, Number, String, Array, Object };

    JsonValue() = default;

    Kind kind() const;
    bool exists() const { return m_tree != nullptr; }
    bool isObject() const { return kind() == Kind::Object; }
    bool isArray() const { return kind() == Kind::Array; }
    bool isString() const { return kind() == Kind::String; }
    bool isTrue() const { return kind() == Kind::True; }

    // Of a string its characters, of a number its spelling; empty of anything else. UTF-8.
    QByteArrayView utf8() const;
    QString string() const;
    // A number without its fraction, held to the bounds; `otherwise` for anything else.
    int integer(int otherwise, int least, int most) const;

    // Of an object the value of the last member of that name, else no value.
    JsonValue operator[](QByteArrayView key) const;

    // The elements of an array and the members of an object, in their order.
    JsonValue firstChild() const;
    JsonValue next() const;
    QByteArrayView key() const; // of a member

    // Keys in the order of their UTF-16 units, no blanks, only quotes, backslashes and control
    // characters escaped, numbers as they were spelled.
    QByteArray canonical() const;

private:
    friend class JsonTree;
    JsonValue(const JsonTree* tree, qint32 index)
        : m_tree(tree)
        , m_index(index)
    {}
    void appendTo(QByteArray& out, std::vector<JsonValue>& open) const;

    const JsonTree* m_tree = nullptr;
    qint32 m_index = 0;
};

class JsonTree
{
public:
    static constexpr int deepest = 1'000; // levels; more are unreadable

    // None for what isn't JSON, text after its end included.
    static std::optional<JsonTree> parse(QByteArray text);

    JsonValue root() const { return m_items.empty() ? JsonValue() : JsonValue(this, 0); }

private:
    friend class JsonValue;
    friend struct JsonReader;
    struct Item
    {
        const char* text = nullptr; // of a string or number
        const char* key = nullptr;
        quint32 length = 0, keyLength = 0;
        qint32 child = -1, next = -1;
        JsonValue::Kind kind = JsonValue::Kind::None;
    };

    QByteArray m_text; // strings are unescaped in place
    std::vector<Item> m_items;
};

// A string as JSON, with its quotes.
void appendJsonString(QByteArray& out, QByteArrayView utf8);
void appendJsonString(QByteArray& out, QStringView text);

} // namespace corvelle
