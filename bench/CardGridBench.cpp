// Finding what is in sight among 10,000 cards, against looking at each of them.

#include "canvas/CardGrid.h"

#include "Items.h"

using namespace corvelle;

namespace {

constexpr int side = 100; // cards in a row, and rows
constexpr double stepX = 256, stepY = 264;

QRectF cardAt(int rank)
{
    return QRectF(rank % side * stepX, rank / side * stepY, 176, 224);
}

// A window of 1440 × 900 in the middle of the cards, at a scale in thousandths.
QRectF sight(const benchmark::State& state)
{
    const double scale = static_cast<double>(state.range(0)) / 1000;
    QRectF rect(0, 0, 1440 / scale, 900 / scale);
    rect.moveCenter(QPointF(side * stepX / 2, side * stepY / 2));
    return rect;
}

void queryGrid(benchmark::State& state)
{
    CardGrid grid;
    for (int rank = 0; rank < side * side; ++rank)
        grid.put(rank, cardAt(rank));
    const QRectF rect = sight(state);
    for (auto _ : state)
        benchmark::DoNotOptimize(grid.meeting(rect));
    workedThrough(state, 1);
}

void lookAtAll(benchmark::State& state)
{
    std::vector<QRectF> cards;
    for (int rank = 0; rank < side * side; ++rank)
        cards.push_back(cardAt(rank));
    const QRectF rect = sight(state);
    for (auto _ : state) {
        std::vector<int> ranks;
        for (int rank = 0; rank < side * side; ++rank)
            if (cards[static_cast<size_t>(rank)].intersects(rect))
                ranks.push_back(rank);
        benchmark::DoNotOptimize(ranks);
    }
    workedThrough(state, 1);
}

} // namespace

BENCHMARK(queryGrid)->Arg(220)->Arg(1100)->ArgName("scale");
BENCHMARK(lookAtAll)->Arg(220)->Arg(1100)->ArgName("scale");
