#include "interface/widgets/ToastModel.h"

#include "support/Printing.h"

#include <QStringList>

#include <gtest/gtest.h>

using namespace corvelle;

namespace {

Toast toast(const QString& text, const QString& key = {}, const QString& action = {})
{
    return {key, {}, text, {}, action};
}

QString texts(const ToastModel& model)
{
    QStringList all;
    for (const ToastModel::Standing& standing : model.toasts())
        all << standing.toast.text;
    return all.join(u'|');
}

} // namespace

TEST(ToastModel, theNewestStandsBelow)
{
    ToastModel model;
    model.show(toast("one"), 0);
    model.show(toast("two"), 10);
    EXPECT_EQ(texts(model), "one|two");
}

TEST(ToastModel, aNewerToastWithTheSameKeyTakesThePlaceOfTheOlder)
{
    ToastModel model;
    const auto first = model.show(toast("Copied 1 item", "copy"), 0);
    model.show(toast("other", "other"), 0);
    const auto second = model.show(toast("Copied 2 items", "copy"), 4000);
    EXPECT_EQ(texts(model), "other|Copied 2 items");
    EXPECT_NE(first, second);
    model.expire(4200 + 3999);
    EXPECT_EQ(texts(model), "Copied 2 items") << "its time begins anew";

    model.show(toast("a"), 0);
    model.show(toast("b"), 0);
    EXPECT_EQ(texts(model), "Copied 2 items|a|b") << "toasts without a key have nothing in common";
}

TEST(ToastModel, stayLongerWithAnAction)
{
    ToastModel model;
    model.show(toast("plain"), 1000);
    model.show(toast("with action", {}, "Undo"), 1000);
    EXPECT_EQ(model.nextEnd(), 5200);
    model.expire(5199);
    EXPECT_EQ(texts(model), "plain|with action");
    model.expire(5200);
    EXPECT_EQ(texts(model), "with action");
    EXPECT_EQ(model.nextEnd(), 8000);
    model.expire(8000);
    EXPECT_EQ(texts(model), "");
    EXPECT_EQ(model.nextEnd(), std::nullopt);
}

TEST(ToastModel, timeStandsStillWhileItIsHeld)
{
    ToastModel model;
    model.show(toast("read"), 0);
    model.hold(4000);
    model.hold(4100); // still the same hold
    EXPECT_EQ(model.nextEnd(), std::nullopt);
    model.expire(100000);
    EXPECT_EQ(texts(model), "read");
    model.show(toast("came meanwhile"), 50000);
    model.release(100000);
    EXPECT_EQ(model.nextEnd(), 100200);
    model.expire(100200);
    EXPECT_EQ(texts(model), "came meanwhile");
    EXPECT_EQ(model.nextEnd(), 104200)
        << "a toast shown under the hold has its whole time after it";
}

TEST(ToastModel, tooManyPushTheOldestOut)
{
    ToastModel model;
    for (int i = 0; i < 6; ++i)
        model.show(toast(QString::number(i)), i);
    EXPECT_EQ(texts(model), "2|3|4|5");
}

TEST(ToastModel, dismissingTakesOneOutOnce)
{
    ToastModel model;
    const auto id = model.show(toast("one"), 0);
    model.show(toast("two"), 0);
    model.dismiss(id);
    model.dismiss(id);
    EXPECT_EQ(texts(model), "two");
}
