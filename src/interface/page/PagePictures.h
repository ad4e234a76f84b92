// The pictures of pages, decoded at the size on screen and kept while there is room.
//
// Main thread; decoding runs on the queue `corvelle.page-pictures`. Nobody's pictures stay in
// memory when no page has shown one for two minutes.
#pragma once

#include "base/SerialQueue.h"
#include "pages/FlatText.h"

#include <QCache>
#include <QElapsedTimer>
#include <QImage>
#include <QObject>
#include <QSet>
#include <QTimer>

#include <deque>
#include <functional>
#include <optional>

namespace corvelle {

// A picture whose bytes stand in the page. One behind a web address isn't fetched.
struct PictureData
{
    QString key; // equal for equal pictures
    QByteArray bytes;
    std::optional<QSize> size; // pixels; none for what can't be shown

    bool isShown() const { return size.has_value(); }
};

class PagePictures : public QObject
{
    Q_OBJECT

public:
    explicit PagePictures(QObject* parent = nullptr);
    ~PagePictures() override;

    // Where pictures are that stand in the page by a name of their own; a name means one picture
    // for ever. Empty for what isn't such a name.
    using Source = std::function<QByteArray(const QString& src)>;
    void setSource(Source source) { m_source = std::move(source); }
    // Puts the bytes into the nodes in place of such names, for what leaves the program.
    void putInBytes(PageNodes& nodes) const;

    // What a picture of a page is. Of its bytes the header alone is read; the newest few are kept,
    // since a large one takes long.
    struct Found
    {
        PagePicture told; // its `src` only where that is an address to follow
        PictureData data;
    };
    Found find(const BlockAttachment& picture);

    // The picture if it was decoded at four fifths of that width or more; else null, and it is
    // decoded unless that has begun. Pixels.
    QImage ready(const PictureData& picture, int width);

    bool isIdle() const { return m_decoding.isEmpty(); }

signals:
    void decoded(const QString& key);

private:
    void checkUse();
    void keep(const QByteArray& node, const Found& found);

    struct Entry
    {
        QImage image;
        int width = 0; // that it was decoded for
    };

    Source m_source;
    QCache<QString, Entry> m_entries;                 // by key; costs in KiB
    std::deque<std::pair<QByteArray, Found>> m_found; // by its node, the newest first
    QSet<QString> m_decoding;
    QElapsedTimer m_lastUse;
    QTimer m_check;
    SerialQueue m_queue;
};

} // namespace corvelle
