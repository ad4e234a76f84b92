#include "documents/XmlNames.h"

namespace corvelle {

namespace {

// Both families of a format meet in one prefix.
const QHash<QByteArray, QByteArray>& canonicalPrefixes()
{
    static const QHash<QByteArray, QByteArray> prefixes = {
        {"http://schemas.openxmlformats.org/wordprocessingml/2006/main", "w"},
        {"http://purl.oclc.org/ooxml/wordprocessingml/main", "w"},
        {"http://schemas.openxmlformats.org/officeDocument/2006/relationships", "r"},
        {"http://purl.oclc.org/ooxml/officeDocument/relationships", "r"},
        {"http://schemas.openxmlformats.org/drawingml/2006/wordprocessingDrawing", "wp"},
        {"http://purl.oclc.org/ooxml/drawingml/wordprocessingDrawing", "wp"},
        {"http://schemas.openxmlformats.org/drawingml/2006/main", "a"},
        {"http://purl.oclc.org/ooxml/drawingml/main", "a"},
        {"http://schemas.openxmlformats.org/drawingml/2006/picture", "pic"},
        {"http://purl.oclc.org/ooxml/drawingml/picture", "pic"},
        {"http://schemas.openxmlformats.org/package/2006/content-types", "content-types"},
        {"http://schemas.openxmlformats.org/package/2006/relationships", "relationships"},
        {"http://schemas.openxmlformats.org/markup-compatibility/2006", "mc"},
        {"http://schemas.openxmlformats.org/officeDocument/2006/math", "m"},
        {"http://purl.oclc.org/ooxml/officeDocument/math", "m"},
        {"urn:schemas-microsoft-com:vml", "v"},
        {"urn:schemas-microsoft-com:office:word", "office-word"},
        {"urn:schemas-microsoft-com:office:office", "o"},
        {"http://schemas.microsoft.com/office/word/2010/wordml", "wordml"},
        {"http://schemas.openxmlformats.org/spreadsheetml/2006/main", "x"},
        {"http://purl.oclc.org/ooxml/spreadsheetml/main", "x"},
    };
    return prefixes;
}

// What names of the namespace begin with; empty for no namespace.
QByteArray leadOf(QByteArrayView uri)
{
    if (uri.isEmpty())
        return {};
    const QByteArray key = uri.toByteArray();
    const auto found = canonicalPrefixes().constFind(key);
    return found != canonicalPrefixes().cend() ? *found + ':' : '{' + key + '}';
}

} // namespace

quint32 XmlNames::number(const QByteArray& name)
{
    if (const auto found = m_numbers.constFind(name); found != m_numbers.cend())
        return *found;
    m_bytes += name.size();
    if (m_names.size() >= most || m_bytes > mostBytes) {
        m_isFull = true;
        return 0;
    }
    m_names.push_back(name);
    const auto number = static_cast<quint32>(m_names.size() - 1);
    m_numbers.insert(name, number);
    return number;
}

void XmlScopes::declare(QByteArrayView prefix, QByteArrayView uri)
{
    if (m_declared.empty() || m_declared.back().depth != m_depth) {
        m_declared.push_back({m_depth, m_scope, {}});
        m_scope = ++m_lastScope;
    }
    const QByteArray key = prefix.toByteArray();
    m_declared.back().prefixes.push_back(key);
    ++m_bindings;
    m_leads[key].push_back(leadOf(uri));
}

void XmlScopes::close()
{
    if (!m_declared.empty() && m_declared.back().depth == m_depth) {
        m_scope = m_declared.back().outerScope;
        for (const QByteArray& prefix : m_declared.back().prefixes) {
            const auto leads = m_leads.find(prefix);
            leads->pop_back();
            if (leads->empty())
                m_leads.erase(leads);
        }
        m_bindings -= m_declared.back().prefixes.size();
        m_declared.pop_back();
    }
    --m_depth;
}

std::optional<QByteArrayView> XmlScopes::declaredPrefix(const char* attribute)
{
    const QByteArrayView name(attribute);
    if (!name.startsWith("xmlns"))
        return std::nullopt;
    if (name.size() == 5)
        return name.last(0);
    return name[5] == ':' ? std::optional(name.sliced(6)) : std::nullopt;
}

quint32 XmlScopes::canonical(const char* name, Table& table, Unprefixed unprefixed)
{
    const QByteArrayView written(name);
    if (written.isEmpty())
        return lookUp(written, table.known, unprefixed).number;
    const auto mixed = static_cast<size_t>(written.size()) * 11 +
                       static_cast<unsigned char>(written.front()) * 3 +
                       static_cast<unsigned char>(written.back());
    Recent& recent = table.recent[mixed % table.recent.size()];
    if (recent.known.scope != m_scope || recent.name != written)
        recent = {written.toByteArray(), lookUp(written, table.known, unprefixed)};
    return recent.known.number;
}

XmlScopes::Known XmlScopes::lookUp(
    QByteArrayView name, QHash<QByteArray, Known>& known, Unprefixed unprefixed)
{
    // Nearly every name was seen before, and under the same bindings.
    const auto found = known.find(QByteArray::fromRawData(name.data(), name.size()));
    if (found != known.end() && found->scope == m_scope)
        return *found;
    const Known fresh{m_names.number(canonicalName(name, unprefixed)), m_scope};
    if (found != known.end())
        *found = fresh;
    else if (known.size() < qsizetype(XmlNames::most))
        known.insert(name.toByteArray(), fresh);
    return fresh;
}

QByteArray XmlScopes::canonicalName(QByteArrayView name, Unprefixed unprefixed) const
{
    const qsizetype colon = name.indexOf(':');
    const QByteArrayView prefix = name.first(std::max<qsizetype>(colon, 0));
    const QByteArrayView local = name.sliced(colon + 1);
    if (colon < 0 && unprefixed == Unprefixed::HasNone)
        return local.toByteArray();
    if (colon >= 0 && prefix == "xml")
        return "{http://www.w3.org/XML/1998/namespace}" + local.toByteArray();
    const auto bound = m_leads.constFind(QByteArray::fromRawData(prefix.data(), prefix.size()));
    if (bound == m_leads.cend())
        return local.toByteArray();
    return bound->back() + local.toByteArray();
}

} // namespace corvelle
