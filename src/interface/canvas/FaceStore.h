// The drawn faces of the cards on a canvas: drawn on workers from values, kept while there is room.
//
// Main thread. A paint asks for what it shows and takes what is there; what is missing or out of
// date is drawn, nearest first, and told by drawn(). What no longer is asked for is not drawn any
// more. The faces that have been out of sight the longest go when all take more than 128 MiB.
#pragma once

#include "interface/canvas/CardFace.h"

#include <QHash>
#include <QObject>
#include <QSet>

#include <functional>
#include <memory>
#include <vector>

namespace corvelle {

// A picture on disk that a face shows; `version` changes with its contents.
struct PictureSource
{
    QString path;
    double version = 0;

    bool isNull() const { return path.isEmpty(); }
};

// What a face is made of: the values, and the pictures that the worker reads for it.
struct FaceRequest
{
    CardFace face;
    PictureSource picture;
    std::vector<PictureSource> peekPictures; // beside face.peeks; null ones for peeks without
};

class FaceStore : public QObject
{
    Q_OBJECT

public:
    explicit FaceStore(QObject* parent = nullptr);
    ~FaceStore() override;

    struct Face
    {
        QImage image;
        double scale = 0; // pixels per point that it was drawn for
    };

    // The look that all faces are drawn in from now on.
    void setLook(Scheme scheme, double devicePixelRatio);

    // The newest face there is; its image is null when there is none.
    Face face(const QString& key);

    // What these show has changed. They are drawn again when asked for; until then the old face
    // stands.
    void invalidate(const QSet<QString>& keys);
    void clear();

    // One paint's wishes, the most wanted first. Replaces all earlier wishes that nobody has begun
    // to draw. `describe` is asked only for faces that have to be drawn.
    using Describe = std::function<FaceRequest(const QString& key)>;
    void want(const std::vector<QString>& keys, double scale, const Describe& describe);

    // Whether nothing is being drawn or waits for it.
    bool isIdle() const;

signals:
    void drawn(const QString& key);

private:
    struct Entry
    {
        QImage image;
        double scale = 0;
        int version = 0;       // of what the card shows
        int drawnVersion = -1; // of the image
        int drawnLook = -1;
        bool isBeingDrawn = false;
        double scaleBeingDrawn = 0;
        int versionBeingDrawn = 0;
        qint64 lastTurn = 0;
    };
    class Workers;
    void took(const QString& key, int version, QImage image, double scale, int look);
    void makeRoom();

    QHash<QString, Entry> m_entries;
    qint64 m_bytes = 0;
    qint64 m_turn = 0; // counts the paints
    Scheme m_scheme = Scheme::Light;
    double m_ratio = 1;
    int m_look = 0; // counts the looks
    std::unique_ptr<Workers> m_workers;
};

} // namespace corvelle
