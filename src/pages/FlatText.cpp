#include "pages/FlatText.h"

#include <algorithm>
#include <array>

namespace corvelle {

namespace {

constexpr Units leafUnits = 1'024;
constexpr size_t leafRuns = 128;

template<class T>
bool sameValue(const std::shared_ptr<const T>& left, const std::shared_ptr<const T>& right)
{
    return left == right || (left && right && *left == *right);
}

const BlockStyle& plainBlock()
{
    static const BlockStyle plain;
    return plain;
}

bool sameBlock(const BlockStyleRef& left, const BlockStyleRef& right)
{
    return left == right || (left ? *left : plainBlock()) == (right ? *right : plainBlock());
}

bool isPlain(const CharStyle& style)
{
    return !style.marks && !style.link && !style.mention && !style.attachment;
}

bool sameStyle(const CharStyleRef& left, const CharStyleRef& right)
{
    if (left == right)
        return true;
    if (!left || !right)
        return isPlain(left ? *left : *right);
    return *left == *right;
}

} // namespace

bool CharStyle::operator==(const CharStyle& other) const
{
    return marks == other.marks && sameValue(link, other.link) &&
           sameValue(mention, other.mention) && sameValue(attachment, other.attachment);
}

// ---- the tree ----

// A balanced tree (AVL) that is never changed; text stands in its leaves alone.
struct FlatText::Tree
{
    // A branch.
    TreeRef left, right;
    // A leaf.
    struct Run
    {
        Units length = 0;
        CharStyleRef style;
    };
    QString text;
    std::vector<Run> runs;
    std::vector<BlockStyleRef> closings; // of its newlines, in order

    Units units = 0;
    qsizetype newlines = 0;
    int height = 0; // 0: a leaf

    bool isLeaf() const { return height == 0; }
};

namespace {

using Tree = FlatText::Tree;
using TreeRef = FlatText::TreeRef;

int heightOf(const TreeRef& tree)
{
    return tree ? tree->height : -1;
}
Units unitsOf(const TreeRef& tree)
{
    return tree ? tree->units : 0;
}

void addRun(std::vector<Tree::Run>& runs, Units length, const CharStyleRef& style)
{
    if (length == 0)
        return;
    if (!runs.empty() && sameStyle(runs.back().style, style))
        runs.back().length += length;
    else
        runs.push_back({length, style});
}

TreeRef leaf(Tree&& made)
{
    if (made.text.isEmpty())
        return nullptr;
    made.units = made.text.size();
    made.newlines = static_cast<qsizetype>(made.closings.size());
    return std::make_shared<const Tree>(std::move(made));
}

TreeRef branch(const TreeRef& left, const TreeRef& right)
{
    Tree made;
    made.left = left;
    made.right = right;
    made.units = left->units + right->units;
    made.newlines = left->newlines + right->newlines;
    made.height = std::max(left->height, right->height) + 1;
    return std::make_shared<const Tree>(std::move(made));
}

// Two trees whose heights differ by at most 2, as one that is balanced.
TreeRef balanced(const TreeRef& left, const TreeRef& right)
{
    if (left->height > right->height + 1) {
        if (heightOf(left->left) >= heightOf(left->right))
            return branch(left->left, branch(left->right, right));
        return branch(branch(left->left, left->right->left), branch(left->right->right, right));
    }
    if (right->height > left->height + 1) {
        if (heightOf(right->right) >= heightOf(right->left))
            return branch(branch(left, right->left), right->right);
        return branch(branch(left, right->left->left), branch(right->left->right, right->right));
    }
    return branch(left, right);
}

// Trees of any heights; costs their difference.
TreeRef joined(const TreeRef& left, const TreeRef& right)
{
    if (!left || !right)
        return left ? left : right;
    if (left->height > right->height + 1)
        return balanced(left->left, joined(left->right, right));
    if (right->height > left->height + 1)
        return balanced(joined(left, right->left), right->right);
    return branch(left, right);
}

TreeRef leafPart(const Tree& from, Units begin, Units end)
{
    if (begin >= end)
        return nullptr;
    Tree part;
    part.text = from.text.mid(begin, end - begin);
    Units at = 0;
    for (const Tree::Run& run : from.runs) {
        const Units first = std::max(at, begin), last = std::min(at + run.length, end);
        if (first < last)
            addRun(part.runs, last - first, run.style);
        at += run.length;
    }
    const auto newlinesIn = [&](Units a, Units b) {
        return QStringView(from.text).mid(a, b - a).count(u'\n');
    };
    const qsizetype skipped = newlinesIn(0, begin), kept = newlinesIn(begin, end);
    part.closings.assign(from.closings.begin() + skipped, from.closings.begin() + skipped + kept);
    return leaf(std::move(part));
}

std::pair<TreeRef, TreeRef> split(const TreeRef& tree, Units at)
{
    if (!tree || at <= 0)
        return {nullptr, tree};
    if (at >= tree->units)
        return {tree, nullptr};
    if (tree->isLeaf())
        return {leafPart(*tree, 0, at), leafPart(*tree, at, tree->units)};
    if (at < tree->left->units) {
        auto [first, second] = split(tree->left, at);
        return {first, joined(second, tree->right)};
    }
    auto [first, second] = split(tree->right, at - tree->left->units);
    return {joined(tree->left, first), second};
}

const Tree& edgeLeaf(const TreeRef& tree, bool last)
{
    const Tree* at = tree.get();
    while (!at->isLeaf())
        at = (last ? at->right : at->left).get();
    return *at;
}

// Joins so that no two neighbouring leaves would fit into one: many small edits don't crumble the
// text.
TreeRef concatenated(const TreeRef& left, const TreeRef& right)
{
    if (!left || !right)
        return left ? left : right;
    const Tree &last = edgeLeaf(left, true), &first = edgeLeaf(right, false);
    if (last.units + first.units > leafUnits || last.runs.size() + first.runs.size() > leafRuns)
        return joined(left, right);
    Tree both;
    both.text = last.text + first.text;
    both.runs = last.runs;
    for (const Tree::Run& run : first.runs)
        addRun(both.runs, run.length, run.style);
    both.closings = last.closings;
    both.closings.insert(both.closings.end(), first.closings.begin(), first.closings.end());
    return joined(joined(split(left, left->units - last.units).first, leaf(std::move(both))),
        split(right, first.units).second);
}

// Calls with each leaf that has units in the range and with where it begins.
template<class Visitor>
void eachLeaf(const Tree& tree, Units start, Units from, Units to, const Visitor& visit)
{
    if (start >= to || start + tree.units <= from)
        return;
    if (tree.isLeaf()) {
        visit(start, tree);
        return;
    }
    eachLeaf(*tree.left, start, from, to, visit);
    eachLeaf(*tree.right, start + tree.left->units, from, to, visit);
}

struct LeafAt
{
    const Tree* leaf = nullptr;
    Units start = 0;
    qsizetype newlines = 0; // before it
};

LeafAt leafAt(const TreeRef& root, Units place)
{
    LeafAt at{root.get(), 0, 0};
    while (!at.leaf->isLeaf()) {
        const Tree& left = *at.leaf->left;
        if (place < at.start + left.units) {
            at.leaf = &left;
        } else {
            at.start += left.units;
            at.newlines += left.newlines;
            at.leaf = at.leaf->right.get();
        }
    }
    return at;
}

// The leaf with the newline of that number, which must exist.
LeafAt leafOfNewline(const TreeRef& root, qsizetype number)
{
    LeafAt at{root.get(), 0, 0};
    while (!at.leaf->isLeaf()) {
        const Tree& left = *at.leaf->left;
        if (number < at.newlines + left.newlines) {
            at.leaf = &left;
        } else {
            at.start += left.units;
            at.newlines += left.newlines;
            at.leaf = at.leaf->right.get();
        }
    }
    return at;
}

Units newlineInLeaf(const LeafAt& at, qsizetype number)
{
    qsizetype place = -1;
    for (qsizetype i = at.newlines; i <= number; ++i)
        place = at.leaf->text.indexOf(u'\n', place + 1);
    return at.start + place;
}

TreeRef builtOf(const std::vector<TreeRef>& leaves, size_t from, size_t to)
{
    if (from == to)
        return nullptr;
    if (to - from == 1)
        return leaves[from];
    const size_t middle = from + (to - from) / 2;
    return branch(builtOf(leaves, from, middle), builtOf(leaves, middle, to));
}

} // namespace

// ---- reading ----

FlatText::FlatText(QStringView text, CharStyleRef style)
{
    FlatTextBuilder builder;
    builder.add(text, style);
    *this = builder.take();
}

Units FlatText::length() const
{
    return unitsOf(m_root);
}

const BlockStyle& FlatText::BlockAt::what() const
{
    return style ? *style : plainBlock();
}

qsizetype FlatText::blockCount() const
{
    if (!m_root)
        return 1;
    return m_root->newlines + (edgeLeaf(m_root, true).text.back() == u'\n' ? 0 : 1);
}

FlatText::BlockAt FlatText::block(qsizetype index) const
{
    BlockAt found;
    found.index = index;
    if (!m_root)
        return found;
    if (index > 0)
        found.start = newlineInLeaf(leafOfNewline(m_root, index - 1), index - 1) + 1;
    if (index < m_root->newlines) {
        const LeafAt at = leafOfNewline(m_root, index);
        found.end = newlineInLeaf(at, index);
        found.style = at.leaf->closings[static_cast<size_t>(index - at.newlines)];
    } else {
        found.end = m_root->units;
    }
    return found;
}

FlatText::BlockAt FlatText::blockAt(Units place) const
{
    if (!m_root)
        return {};
    if (place >= m_root->units)
        return block(blockCount() - 1);
    const LeafAt at = leafAt(m_root, std::max<Units>(place, 0));
    return block(
        at.newlines +
        QStringView(at.leaf->text).left(std::max<Units>(place, 0) - at.start).count(u'\n'));
}

QString FlatText::text(Units from, Units to) const
{
    QString result;
    from = std::max<Units>(from, 0);
    to = std::min(to, length());
    if (from >= to)
        return result;
    result.reserve(to - from);
    eachLeaf(*m_root, 0, from, to, [&](Units start, const Tree& leaf) {
        const Units first = std::max(from - start, Units(0)),
                    last = std::min(to - start, leaf.units);
        result += QStringView(leaf.text).mid(first, last - first);
    });
    return result;
}

QChar FlatText::at(Units place) const
{
    if (place < 0 || place >= length())
        return {};
    const LeafAt at = leafAt(m_root, place);
    return at.leaf->text.at(place - at.start);
}

CharStyleRef FlatText::styleAt(Units place) const
{
    if (place < 0 || place >= length())
        return {};
    const LeafAt at = leafAt(m_root, place);
    Units end = at.start;
    for (const Tree::Run& run : at.leaf->runs)
        if (place < (end += run.length))
            return run.style;
    return {};
}

void FlatText::eachRun(Units from, Units to, const RunVisitor& visit) const
{
    if (!m_root || from >= to)
        return;
    eachLeaf(*m_root, 0, from, to, [&](Units start, const Tree& leaf) {
        Units at = start;
        for (const Tree::Run& run : leaf.runs) {
            const Units first = std::max(at, from), last = std::min(at + run.length, to);
            if (first < last)
                visit(first, QStringView(leaf.text).mid(first - start, last - first), run.style);
            at += run.length;
        }
    });
}

void FlatText::eachBlock(qsizetype first, const std::function<bool(const BlockAt&)>& visit) const
{
    if (!m_root) {
        if (first == 0)
            visit({});
        return;
    }
    if (first >= blockCount())
        return;
    BlockAt at = block(first);
    bool goesOn = true;
    at.end = at.start;
    eachLeaf(*m_root, 0, at.start, m_root->units, [&](Units start, const Tree& leaf) {
        if (!goesOn)
            return;
        qsizetype from = std::max(at.start - start, Units(0));
        auto closing = leaf.closings.begin() + QStringView(leaf.text).left(from).count(u'\n');
        while (goesOn) {
            const qsizetype newline = leaf.text.indexOf(u'\n', from);
            if (newline < 0)
                return;
            at.end = start + newline;
            at.style = *closing++;
            goesOn = visit(at);
            ++at.index;
            at.start = at.end + 1;
            from = newline + 1;
        }
    });
    if (goesOn && at.start < m_root->units) {
        at.end = m_root->units;
        at.style = nullptr;
        visit(at);
    }
}

// ---- changing ----

FlatText FlatText::slice(Units from, Units to) const
{
    if (from >= to)
        return {};
    return FlatText(split(split(m_root, to).first, from).second);
}

void FlatText::replace(Units from, Units to, const FlatText& with)
{
    const auto [before, rest] = split(m_root, from);
    const TreeRef after = split(rest, to - from).second;
    m_root = concatenated(concatenated(before, with.m_root), after);
}

void FlatText::setStyle(
    Units from, Units to, const std::function<CharStyleRef(const CharStyleRef&)>& change)
{
    const auto [before, rest] = split(m_root, from);
    const auto [middle, after] = split(rest, to - from);
    if (!middle)
        return;
    std::vector<TreeRef> leaves;
    eachLeaf(*middle, 0, 0, middle->units, [&](Units, const Tree& old) {
        Tree made;
        made.text = old.text;
        made.closings = old.closings;
        for (const Tree::Run& run : old.runs)
            addRun(made.runs, run.length, change(run.style));
        leaves.push_back(leaf(std::move(made)));
    });
    m_root = concatenated(concatenated(before, builtOf(leaves, 0, leaves.size())), after);
}

void FlatText::setBlockStyle(qsizetype index, BlockStyleRef style)
{
    if (!m_root || index >= m_root->newlines)
        return;
    const LeafAt at = leafOfNewline(m_root, index);
    const Units newline = newlineInLeaf(at, index);
    Tree made;
    made.text = QStringLiteral("\n");
    made.runs = {{1, styleAt(newline)}};
    made.closings = {std::move(style)};
    replace(newline, newline + 1, FlatText(leaf(std::move(made))));
}

bool FlatText::operator==(const FlatText& other) const
{
    if (m_root == other.m_root)
        return true;
    if (length() != other.length() || (m_root && m_root->newlines != other.m_root->newlines))
        return false;
    struct Piece
    {
        Units end;
        CharStyleRef style;
    };
    const auto told = [](const FlatText& text) {
        std::vector<Piece> runs;
        text.eachRun(0, text.length(), [&](Units at, QStringView piece, const CharStyleRef& style) {
            if (!runs.empty() && sameStyle(runs.back().style, style))
                runs.back().end = at + piece.size();
            else
                runs.push_back({at + piece.size(), style});
        });
        std::vector<BlockStyleRef> closings;
        if (text.m_root)
            eachLeaf(*text.m_root, 0, 0, text.length(), [&](Units, const Tree& leaf) {
                closings.insert(closings.end(), leaf.closings.begin(), leaf.closings.end());
            });
        return std::pair(std::move(runs), std::move(closings));
    };
    if (text() != other.text())
        return false;
    const auto [runs, closings] = told(*this);
    const auto [otherRuns, otherClosings] = told(other);
    return std::equal(runs.begin(), runs.end(), otherRuns.begin(), otherRuns.end(),
               [](const Piece& l, const Piece& r) {
                   return l.end == r.end && sameStyle(l.style, r.style);
               }) &&
           std::equal(closings.begin(), closings.end(), otherClosings.begin(), sameBlock);
}

// ---- the builder ----

struct FlatTextBuilder::Leaves
{
    std::vector<TreeRef> done;
    Tree open;
    BlockStyleRef lastBlock;
    CharStyleRef lastStyle;

    void close()
    {
        if (TreeRef made = leaf(std::move(open)))
            done.push_back(std::move(made));
        open = {};
    }
    void makeRoom()
    {
        if (open.text.size() >= leafUnits || open.runs.size() >= leafRuns)
            close();
    }
};

FlatTextBuilder::FlatTextBuilder()
    : m_leaves(std::make_unique<Leaves>())
{}

FlatTextBuilder::~FlatTextBuilder() = default;

void FlatTextBuilder::add(QStringView text, const CharStyleRef& given)
{
    // Equal styles that follow each other share one value.
    if (!sameStyle(m_leaves->lastStyle, given))
        m_leaves->lastStyle = given && isPlain(*given) ? nullptr : given;
    const CharStyleRef style = m_leaves->lastStyle;
    const auto addPlain = [&](QStringView piece) {
        while (!piece.isEmpty()) {
            m_leaves->makeRoom();
            const qsizetype room = leafUnits - m_leaves->open.text.size();
            m_leaves->open.text += piece.left(room);
            addRun(m_leaves->open.runs, std::min(room, piece.size()), style);
            piece = piece.mid(std::min(room, piece.size()));
        }
    };
    const auto endsLine = [](QChar c) { return c == u'\n' || c == u'\r' || c == QChar(0x2029); };
    while (!text.isEmpty()) {
        const auto end = std::find_if(text.begin(), text.end(), endsLine);
        addPlain(text.left(end - text.begin()));
        if (end == text.end())
            return;
        addPlain(QStringView(&lineBreak, 1));
        const bool both = *end == u'\r' && end + 1 != text.end() && end[1] == u'\n';
        text = text.mid(end - text.begin() + (both ? 2 : 1));
    }
}

void FlatTextBuilder::closeBlock(const BlockStyleRef& given)
{
    m_leaves->makeRoom();
    if (!sameBlock(m_leaves->lastBlock, given))
        m_leaves->lastBlock = given;
    m_leaves->open.text += u'\n';
    addRun(m_leaves->open.runs, 1, nullptr);
    m_leaves->open.closings.push_back(m_leaves->lastBlock);
}

bool FlatTextBuilder::isEmpty() const
{
    return m_leaves->done.empty() && m_leaves->open.text.isEmpty();
}

FlatText FlatTextBuilder::take()
{
    m_leaves->close();
    FlatText text(builtOf(m_leaves->done, 0, m_leaves->done.size()));
    *m_leaves = {};
    return text;
}

// ---- edits ----

FlatText applied(const Edit& edit, FlatText before)
{
    for (auto step = edit.steps.rbegin(); step != edit.steps.rend(); ++step)
        before.replace(step->at, step->at + step->removed, step->inserted);
    return before;
}

Edit inverted(const Edit& edit, const FlatText& before)
{
    Edit back;
    Units shift = 0;
    for (const Edit::Step& step : edit.steps) {
        back.steps.push_back({step.at + shift, step.inserted.length(),
            before.slice(step.at, step.at + step.removed), step.restyles});
        shift += step.inserted.length() - step.removed;
    }
    return back;
}

namespace {

// A step of either edit, by where it lies in the text between the two.
struct Between
{
    Units from = 0, to = 0; // in that text
    Units at = 0;           // of the first: in the text before
    Edit::Step step;
    bool isFirst = false;
};

// Cuts a change of style at the given places of the text between, so that it keeps its characters
// apart wherever the other edit treats them differently.
void addCut(std::vector<Between>& all, const Between& whole, const std::vector<Units>& cuts)
{
    if (!whole.step.restyles) {
        all.push_back(whole);
        return;
    }
    Units from = whole.from;
    const auto add = [&](Units to) {
        if (from >= to)
            return;
        Between part = whole;
        part.from = from;
        part.to = to;
        part.at = whole.at + (from - whole.from);
        part.step.at += from - whole.from;
        part.step.removed = to - from;
        part.step.inserted = whole.step.inserted.slice(from - whole.from, to - whole.from);
        all.push_back(std::move(part));
        from = to;
    };
    for (auto cut = std::upper_bound(cuts.begin(), cuts.end(), whole.from);
         cut != cuts.end() && *cut < whole.to; ++cut)
        add(*cut);
    add(whole.to);
}

std::vector<Units> edgesOf(const std::vector<Between>& steps)
{
    std::vector<Units> edges;
    for (const Between& each : steps) {
        edges.push_back(each.from);
        edges.push_back(each.to);
    }
    std::sort(edges.begin(), edges.end());
    return edges;
}

// Steps that touch in the text between become one; its characters are those of the first edit that
// the second leaves, and those of the second.
Edit::Step united(const std::vector<Between>& group, Units before, Units removed)
{
    Edit::Step whole{before, removed, {}, true};
    std::vector<const Between*> thens;
    for (const Between& each : group) {
        whole.restyles &= each.step.restyles;
        if (!each.isFirst)
            thens.push_back(&each);
    }
    // Inserted text of the first, cut where the second removes, with what the second puts there.
    Units at = group.front().from;
    auto then = thens.begin();
    const auto append = [&](const FlatText& text) {
        whole.inserted.replace(whole.inserted.length(), whole.inserted.length(), text);
    };
    for (const Between& each : group) {
        if (!each.isFirst)
            continue;
        Units from = std::max(each.from, at);
        while (then != thens.end() && (*then)->from <= each.to) {
            append(each.step.inserted.slice(
                from - each.from, std::max(from, (*then)->from) - each.from));
            append((*then)->step.inserted);
            at = (*then)->to;
            from = std::max(from, at);
            ++then;
        }
        if (from < each.to)
            append(each.step.inserted.slice(from - each.from, each.to - each.from));
    }
    for (; then != thens.end(); ++then)
        append((*then)->step.inserted);
    return whole;
}

} // namespace

Edit composed(const Edit& first, const Edit& then)
{
    std::vector<Between> firsts, thens, all;
    Units shift = 0;
    for (const Edit::Step& step : first.steps) {
        firsts.push_back(
            {step.at + shift, step.at + shift + step.inserted.length(), step.at, step, true});
        shift += step.inserted.length() - step.removed;
    }
    for (const Edit::Step& step : then.steps)
        thens.push_back({step.at, step.at + step.removed, 0, step, false});
    const std::vector<Units> firstEdges = edgesOf(firsts), thenEdges = edgesOf(thens);
    for (const Between& each : firsts)
        addCut(all, each, thenEdges);
    for (const Between& each : thens)
        addCut(all, each, firstEdges);
    std::stable_sort(all.begin(), all.end(), [](const Between& left, const Between& right) {
        return std::pair(left.from, left.to) < std::pair(right.from, right.to);
    });

    Edit result;
    Units offset = 0; // from the text between to the text before, behind what has been handled
    for (size_t i = 0; i < all.size();) {
        std::vector<Between> group{all[i]};
        Units to = all[i].to;
        size_t next = i + 1;
        // Neighbouring changes of style stay apart: they move nothing.
        const auto touches = [&](const Between& each) {
            if (each.from < to || (each.from == to && each.from == all[i].from && each.to == to))
                return true;
            return each.from == to && !each.step.restyles &&
                   std::none_of(group.begin(), group.end(),
                       [](const Between& g) { return g.step.restyles; });
        };
        for (; next < all.size() && touches(all[next]); ++next) {
            to = std::max(to, all[next].to);
            group.push_back(all[next]);
        }
        const Units before = all[i].from + offset;
        Units removed = to - all[i].from;
        for (const Between& each : group)
            if (each.isFirst)
                removed += each.step.removed - each.step.inserted.length();
        result.steps.push_back(united(group, before, removed));
        offset += removed - (to - all[i].from);
        i = next;
    }
    return result;
}

Units mapped(Units place, const Edit& edit, Bias bias)
{
    Units shift = 0;
    for (const Edit::Step& step : edit.steps) {
        if (step.at > place)
            break;
        if (step.restyles)
            continue;
        const Units end = step.at + step.removed;
        const bool isBehind =
            place > end || (place == end && (step.removed > 0 || bias == Bias::After));
        if (!isBehind)
            return step.at + shift;
        shift += step.inserted.length() - step.removed;
    }
    return place + shift;
}

PageNode nodeOf(const BlockAttachment& attachment)
{
    return attachment.made ? *attachment.made : nodeFromJson(attachment.node);
}

} // namespace corvelle
