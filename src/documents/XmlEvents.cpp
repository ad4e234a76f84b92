#include "documents/XmlEvents.h"

#include "documents/XNode.h"

#include <expat.h>

#include <algorithm>
#include <vector>

namespace corvelle {

namespace {

constexpr int pieceBytes = 64 << 10;
constexpr qint64 mostTokenBytes = 8LL << 20; // expat holds a tag, a comment or the like as a whole

class Reader
{
public:
    Reader(XmlNames& names, XmlSink& sink)
        : m_names(names)
        , m_scopes(names)
        , m_sink(sink)
        , m_parser(XML_ParserCreate(nullptr))
    {
        XML_SetUserData(m_parser, this);
        XML_SetElementHandler(m_parser, onStart, onEnd);
        XML_SetCharacterDataHandler(m_parser, onText);
        XML_SetEntityDeclHandler(m_parser, onEntity);
    }
    ~Reader() { XML_ParserFree(m_parser); }
    Reader(const Reader&) = delete;
    Reader& operator=(const Reader&) = delete;

    XmlEnd read(const ByteSource& source)
    {
        const bool isWhole = feed(source);
        if (m_isStopped)
            return XmlEnd::StoppedHere;
        if (isWhole)
            return XmlEnd::Whole;
        return m_hadRoot && m_depth == 0 && !m_isRefused ? XmlEnd::AfterRoot : XmlEnd::Broken;
    }

private:
    // A token that spans pieces is looked at anew with each: the pieces grow with it, so that this
    // stays linear.
    bool feed(const ByteSource& source)
    {
        qint64 fed = 0;
        for (int piece = pieceBytes;;) {
            void* room = XML_GetBuffer(m_parser, piece);
            const qsizetype count = room ? source(static_cast<char*>(room), piece) : -1;
            if (count < 0)
                return false;
            const auto status = XML_ParseBuffer(m_parser, static_cast<int>(count), count == 0);
            if (status != XML_STATUS_OK)
                return false;
            if (count == 0)
                return true;
            fed += count;
            const qint64 pending = fed - std::max<qint64>(0, XML_GetCurrentByteIndex(m_parser));
            if (pending > mostTokenBytes)
                return false;
            piece = static_cast<int>(
                std::min(std::max<qint64>(pending, pieceBytes), mostTokenBytes + 1 - pending));
        }
    }

    void goOn(bool wanted)
    {
        if (wanted && !m_names.isFull() && !m_scopes.isFull())
            return;
        m_isStopped = !wanted;
        m_isRefused = true;
        XML_StopParser(m_parser, XML_FALSE);
    }

    void start(const char* name, const char** attributes)
    {
        if (++m_depth > XNode::mostLevels) {
            refuse();
            return;
        }
        m_hadRoot = true;
        m_scopes.open();
        for (const char** each = attributes; *each; each += 2)
            if (const auto prefix = XmlScopes::declaredPrefix(each[0]);
                prefix && !m_scopes.isFull())
                m_scopes.declare(*prefix, QByteArrayView(each[1]));
        m_attributes.clear();
        for (const char** each = attributes; *each; each += 2)
            if (!XmlScopes::declaredPrefix(each[0]))
                m_attributes.push_back({m_scopes.attribute(each[0]), each[1]});
        goOn(m_sink.startElement(m_scopes.element(name), m_attributes));
    }

    void end()
    {
        // Once stopped, expat still tells the end of an empty element.
        if (m_isRefused)
            return;
        --m_depth;
        m_scopes.close();
        goOn(m_sink.endElement());
    }

    void refuse()
    {
        m_isRefused = true;
        XML_StopParser(m_parser, XML_FALSE);
    }

    static void XMLCALL onStart(void* self, const char* name, const char** attributes)
    {
        static_cast<Reader*>(self)->start(name, attributes);
    }
    static void XMLCALL onEnd(void* self, const char*) { static_cast<Reader*>(self)->end(); }
    static void XMLCALL onText(void* self, const char* text, int size)
    {
        auto* reader = static_cast<Reader*>(self);
        if (!reader->m_isRefused)
            reader->goOn(reader->m_sink.text(QByteArrayView(text, size)));
    }
    static void XMLCALL onEntity(void* self, const char*, int isParameter, const char* value, int,
        const char*, const char*, const char*, const char*)
    {
        if (!isParameter && value)
            static_cast<Reader*>(self)->refuse();
    }

    XmlNames& m_names;
    XmlScopes m_scopes;
    XmlSink& m_sink;
    XML_Parser m_parser;
    std::vector<XmlSink::Attribute> m_attributes;
    int m_depth = 0;
    bool m_hadRoot = false, m_isStopped = false, m_isRefused = false;
};

} // namespace

XmlEnd readXml(const ByteSource& source, XmlNames& names, XmlSink& sink)
{
    return source ? Reader(names, sink).read(source) : XmlEnd::Broken;
}

ByteSource sourceOf(QByteArrayView bytes)
{
    return [bytes](char* into, qsizetype most) mutable {
        const qsizetype count = std::min(most, bytes.size());
        std::copy_n(bytes.data(), count, into);
        bytes = bytes.sliced(count);
        return count;
    };
}

} // namespace corvelle
