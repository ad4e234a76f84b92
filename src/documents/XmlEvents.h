// Reads XML by expat and tells its events with canonical names. External entities are empty,
// general entities with a value end the parse, and no single tag, comment or entity may be longer
// than a limit.
#pragma once

#include "documents/XmlNames.h"
#include "documents/ZipArchive.h"

#include <memory>

namespace corvelle {

// Any of these returns false to end the parse.
class XmlSink
{
public:
    // Numbers are those of the document's XmlNames; values are UTF-8 and end in a zero byte.
    struct Attribute
    {
        quint32 name;
        const char* value;
    };
    virtual bool startElement(quint32 name, const std::vector<Attribute>& attributes) = 0;
    virtual bool text(QByteArrayView utf8) = 0;
    virtual bool endElement() = 0;

protected:
    ~XmlSink() = default;
};

enum class XmlEnd {
    Whole,       // well-formed to the end
    AfterRoot,   // broken behind the end tag of the root
    Broken,      // broken before, or beyond the limits
    StoppedHere, // by the sink
};

// `names` takes every name that comes up.
XmlEnd readXml(const ByteSource& source, XmlNames& names, XmlSink& sink);

// The source must not outlive the bytes.
ByteSource sourceOf(QByteArrayView bytes);

} // namespace corvelle
