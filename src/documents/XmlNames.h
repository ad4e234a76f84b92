// The names of elements and attributes while one XML document is read: which prefix means which
// namespace where, and what a name is called in the end. "Namespaces in XML 1.0" is the standard; a
// prefix that nobody bound is passed over here.
#pragma once

#include <QByteArray>
#include <QByteArrayView>
#include <QHash>

#include <array>
#include <deque>
#include <optional>
#include <vector>

namespace corvelle {

// Names by number. The views that it gives stay.
class XmlNames
{
public:
    static constexpr size_t most = 50'000;
    static constexpr qsizetype mostBytes = 8 << 20; // of all names together

    // Adds it if it isn't there. Beyond the limits isFull() and the number is that of any name.
    quint32 number(const QByteArray& name);
    QByteArrayView name(quint32 number) const { return m_names[number]; }
    bool isFull() const { return m_isFull; }

private:
    std::deque<QByteArray> m_names;
    QHash<QByteArray, quint32> m_numbers;
    qsizetype m_bytes = 0;
    bool m_isFull = false;
};

// The prefixes bound at a place of the document, and the canonical names that follow from them.
class XmlScopes
{
public:
    explicit XmlScopes(XmlNames& names)
        : m_names(names)
    {}

    // At each start tag, with its declarations between; at each end tag.
    void open() { ++m_depth; }
    void declare(QByteArrayView prefix, QByteArrayView uri);
    void close();

    static constexpr size_t mostBindings = 10'000;
    bool isFull() const { return m_bindings > mostBindings; }

    quint32 element(const char* name)
    {
        return canonical(name, m_elements, Unprefixed::HasDefault);
    }
    quint32 attribute(const char* name)
    {
        return canonical(name, m_attributes, Unprefixed::HasNone);
    }

    // The prefix of a declaration, from an attribute's name; none when it is another attribute.
    static std::optional<QByteArrayView> declaredPrefix(const char* attribute);

private:
    enum class Unprefixed { HasDefault, HasNone };
    struct Known
    {
        quint32 number = 0;
        quint64 scope = 0;
    };
    struct Recent
    {
        QByteArray name;
        Known known;
    };
    // By the name as it is written. A document has few, so that those met last are found without a
    // hash, which took a third of reading a sheet.
    struct Table
    {
        QHash<QByteArray, Known> known;
        std::array<Recent, 64> recent;
    };
    struct Declared
    {
        int depth = 0;
        quint64 outerScope = 0;
        std::vector<QByteArray> prefixes;
    };

    quint32 canonical(const char* name, Table& table, Unprefixed unprefixed);
    Known lookUp(QByteArrayView name, QHash<QByteArray, Known>& known, Unprefixed unprefixed);
    QByteArray canonicalName(QByteArrayView name, Unprefixed unprefixed) const;

    XmlNames& m_names;
    int m_depth = 0;
    quint64 m_scope = 1, m_lastScope = 1; // a number for each set of bindings
    std::vector<Declared> m_declared;
    size_t m_bindings = 0;                              // of all open elements
    QHash<QByteArray, std::vector<QByteArray>> m_leads; // by prefix: what its names begin with
    Table m_elements, m_attributes;
};

} // namespace corvelle
