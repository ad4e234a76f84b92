// Drawing the face of a card of each kind at four sizes, against clearing as many pixels.

#include "interface/canvas/CardFace.h"

#include "Items.h"

using namespace corvelle;
using namespace Qt::StringLiterals;

namespace {

using Kind = CardFace::Kind;

QImage picture(int width, int height)
{
    QImage image(width, height, QImage::Format_RGB32);
    for (int y = 0; y < height; ++y)
        for (int x = 0; x < width; ++x)
            image.setPixelColor(x, y, QColor(x * 255 / width, y * 255 / height, 128));
    return image;
}

CardFace faceOf(Kind kind)
{
    CardFace face;
    face.kind = kind;
    face.title = u"Lease agreement and notes.pdf"_s;
    switch (kind) {
    case Kind::Folder:
        face.size = {224, 176};
        face.color = NodeColor::Blue;
        face.count = 12;
        face.peeks = {{CardFace::Peek::Kind::Page, {}, {}},
            {CardFace::Peek::Kind::Folder, NodeColor::Red, {}},
            {CardFace::Peek::Kind::Picture, {}, picture(320, 240)}};
        break;
    case Kind::Page:
        face.size = {176, 224};
        for (const auto line : {CardFace::Line::Kind::Heading, CardFace::Line::Kind::Text,
                 CardFace::Line::Kind::Bullet, CardFace::Line::Kind::Todo,
                 CardFace::Line::Kind::Done, CardFace::Line::Kind::Quote})
            face.lines.push_back({line, u"Limewash, two coats, and a day between them"_s, 1});
        break;
    case Kind::File:
        face.size = {176, 224};
        face.badge = u"PDF"_s;
        face.meta = u"12 pages"_s;
        break;
    case Kind::Picture:
        face.size = {230, 173};
        face.picture = picture(800, 600);
        break;
    case Kind::Link:
        face.size = {240, 150};
        face.host = u"plankguide.example"_s;
        break;
    }
    return face;
}

constexpr Kind kinds[] = {Kind::Folder, Kind::Page, Kind::File, Kind::Picture, Kind::Link};

// From far, at 84 %, at 100 % and as near as it goes.
void forSizes(benchmark::internal::Benchmark* each)
{
    each->ArgsProduct({{0, 1, 2, 3, 4}, {220, 924, 1100, 2750}})->ArgNames({"kind", "scale"});
}

double scaleOf(const benchmark::State& state)
{
    return static_cast<double>(state.range(1)) / 1000;
}

void drawFace(benchmark::State& state)
{
    const CardFace face = faceOf(kinds[state.range(0)]);
    for (auto _ : state)
        benchmark::DoNotOptimize(drawCardFace(face, Scheme::Light, scaleOf(state), 1));
    workedThrough(state, 1);
}

void clearPixels(benchmark::State& state)
{
    const CardFace face = faceOf(kinds[state.range(0)]);
    const QSize size = drawCardFace(face, Scheme::Light, scaleOf(state), 1).size();
    for (auto _ : state) {
        QImage image(size, QImage::Format_ARGB32_Premultiplied);
        image.fill(Qt::transparent);
        benchmark::DoNotOptimize(image.bits());
    }
    workedThrough(state, 1);
}

} // namespace

BENCHMARK(drawFace)->Apply(forSizes);
BENCHMARK(clearPixels)->Apply(forSizes);
