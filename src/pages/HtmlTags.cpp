#include "pages/HtmlTags.h"

#include <array>
#include <string_view>

namespace corvelle {

namespace {

struct Named
{
    std::string_view name;
    HtmlTag tag;
};

constexpr Named named[] = {
    {"a", HtmlTag::A},
    {"b", HtmlTag::B},
    {"blockquote", HtmlTag::Blockquote},
    {"body", HtmlTag::Body},
    {"br", HtmlTag::Br},
    {"caption", HtmlTag::Caption},
    {"code", HtmlTag::Code},
    {"dd", HtmlTag::Dd},
    {"del", HtmlTag::Del},
    {"dl", HtmlTag::Dl},
    {"dt", HtmlTag::Dt},
    {"em", HtmlTag::Em},
    {"h1", HtmlTag::H1},
    {"h2", HtmlTag::H2},
    {"h3", HtmlTag::H3},
    {"h4", HtmlTag::H4},
    {"h5", HtmlTag::H5},
    {"h6", HtmlTag::H6},
    {"head", HtmlTag::Head},
    {"hr", HtmlTag::Hr},
    {"i", HtmlTag::I},
    {"img", HtmlTag::Img},
    {"input", HtmlTag::Input},
    {"kbd", HtmlTag::Kbd},
    {"li", HtmlTag::Li},
    {"math", HtmlTag::Math},
    {"ol", HtmlTag::Ol},
    {"option", HtmlTag::Option},
    {"p", HtmlTag::P},
    {"pre", HtmlTag::Pre},
    {"s", HtmlTag::S},
    {"samp", HtmlTag::Samp},
    {"span", HtmlTag::Span},
    {"strike", HtmlTag::Strike},
    {"strong", HtmlTag::Strong},
    {"svg", HtmlTag::Svg},
    {"table", HtmlTag::Table},
    {"td", HtmlTag::Td},
    {"th", HtmlTag::Th},
    {"tr", HtmlTag::Tr},
    {"tt", HtmlTag::Tt},
    {"u", HtmlTag::U},
    {"ul", HtmlTag::Ul},

    {"area", HtmlTag::OtherVoid},
    {"base", HtmlTag::OtherVoid},
    {"col", HtmlTag::OtherVoid},
    {"embed", HtmlTag::OtherVoid},
    {"link", HtmlTag::OtherVoid},
    {"meta", HtmlTag::OtherVoid},
    {"param", HtmlTag::OtherVoid},
    {"source", HtmlTag::OtherVoid},
    {"track", HtmlTag::OtherVoid},
    {"wbr", HtmlTag::OtherVoid},

    {"button", HtmlTag::OtherSkipped},
    {"noscript", HtmlTag::OtherSkipped},
    {"select", HtmlTag::OtherSkipped},
    {"template", HtmlTag::OtherSkipped},
    {"script", HtmlTag::OtherRaw},
    {"style", HtmlTag::OtherRaw},
    {"textarea", HtmlTag::OtherRaw},
    {"title", HtmlTag::OtherRaw},

    {"address", HtmlTag::OtherBlock},
    {"article", HtmlTag::OtherBlock},
    {"aside", HtmlTag::OtherBlock},
    {"center", HtmlTag::OtherBlock},
    {"colgroup", HtmlTag::OtherBlock},
    {"details", HtmlTag::OtherBlock},
    {"dialog", HtmlTag::OtherBlock},
    {"dir", HtmlTag::OtherBlock},
    {"div", HtmlTag::OtherBlock},
    {"fieldset", HtmlTag::OtherBlock},
    {"figcaption", HtmlTag::OtherBlock},
    {"figure", HtmlTag::OtherBlock},
    {"footer", HtmlTag::OtherBlock},
    {"form", HtmlTag::OtherBlock},
    {"frameset", HtmlTag::OtherBlock},
    {"header", HtmlTag::OtherBlock},
    {"hgroup", HtmlTag::OtherBlock},
    {"html", HtmlTag::OtherBlock},
    {"legend", HtmlTag::OtherBlock},
    {"listing", HtmlTag::OtherBlock},
    {"main", HtmlTag::OtherBlock},
    {"menu", HtmlTag::OtherBlock},
    {"nav", HtmlTag::OtherBlock},
    {"noframes", HtmlTag::OtherBlock},
    {"optgroup", HtmlTag::OtherBlock},
    {"plaintext", HtmlTag::OtherBlock},
    {"search", HtmlTag::OtherBlock},
    {"section", HtmlTag::OtherBlock},
    {"summary", HtmlTag::OtherBlock},
    {"tbody", HtmlTag::OtherBlock},
    {"tfoot", HtmlTag::OtherBlock},
    {"thead", HtmlTag::OtherBlock},
    {"xmp", HtmlTag::OtherBlock},
};

// A name of up to twelve letters and digits as one number for its first eight and one for the rest.
struct Key
{
    quint64 head = 0;
    quint32 tail = 0;
    bool operator==(const Key&) const = default;
};
constexpr qsizetype longestName = 12;

template<class Text>
constexpr Key keyOf(const Text& name)
{
    Key key;
    for (qsizetype i = 0; i < static_cast<qsizetype>(name.size()); ++i) {
        auto letter = static_cast<quint64>(
            static_cast<char16_t>(name[static_cast<decltype(name.size())>(i)]));
        if (letter >= 'A' && letter <= 'Z')
            letter += 'a' - 'A';
        if (i < 8)
            key.head = key.head << 8 | letter;
        else
            key.tail = key.tail << 8 | static_cast<quint32>(letter);
    }
    return key;
}

struct Table
{
    static constexpr size_t size = 512;
    static constexpr size_t slot(const Key& key)
    {
        return ((key.head ^ key.tail) * 0x9E3779B97F4A7C15ull) >> 55;
    }

    std::array<Key, size> keys{};
    std::array<HtmlTag, size> tags{};

    constexpr Table()
    {
        for (const Named& one : named) {
            const Key key = keyOf(one.name);
            size_t at = slot(key);
            while (tags[at] != HtmlTag::None)
                at = (at + 1) % size;
            keys[at] = key;
            tags[at] = one.tag;
        }
    }
    HtmlTag find(const Key& key) const
    {
        for (size_t at = slot(key); tags[at] != HtmlTag::None; at = (at + 1) % size)
            if (keys[at] == key)
                return tags[at];
        return HtmlTag::None;
    }
};
constexpr Table table;

} // namespace

HtmlTag htmlTag(QStringView name)
{
    if (name.size() > longestName)
        return HtmlTag::None;
    for (const QChar letter : name)
        if (letter.unicode() > 0x7F)
            return HtmlTag::None;
    return table.find(keyOf(std::u16string_view(name.utf16(), static_cast<size_t>(name.size()))));
}

} // namespace corvelle
