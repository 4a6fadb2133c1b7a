#include "TarnlyApp/Desktop/ClientList.hpp"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <QDateTime>
#include <QLocale>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <chrono>

#include "TarnlyApp/Desktop/Widgets.hpp"

namespace tarnly {
namespace {

using testing::ElementsAre;
using testing::SizeIs;

class ClientListTest : public testing::Test {
  protected:
    PairedClient client(std::int64_t id, const std::string& address, std::size_t subscriptions = 0) const {
        return {id, address, now, subscriptions};
    }
    QString clock() const {
        const auto time = QDateTime::fromSecsSinceEpoch(now.time_since_epoch().count());
        return QLocale().toString(time.time(), QLocale::ShortFormat);
    }
    void show(const std::vector<PairedClient>& clients) {
        list.showClients(ClientsStatus::of(clients, clients.size()));
    }
    std::vector<QPushButton*> buttons() {
        std::vector<QPushButton*> shown;
        for (auto* button : list.findChildren<QPushButton*>()) {
            if (!button->isHidden()) shown.push_back(button);
        }
        return shown;
    }

    const std::chrono::sys_seconds now =
        std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
    ClientList list;
};

TEST_F(ClientListTest, IsHiddenWithoutAClient) {
    EXPECT_TRUE(list.isHidden());
    show({client(1, "192.168.1.30")});
    EXPECT_FALSE(list.isHidden());
    show({});
    EXPECT_TRUE(list.isHidden());
    EXPECT_THAT(buttons(), SizeIs(0));
}

TEST_F(ClientListTest, ARowSaysWhereFromSinceWhenAndHowMuch) {
    show({client(1, "192.168.1.30", 12), client(2, "127.0.0.1", 1)});
    list.adjustSize();
    const auto texts = test::textsFromTop(list);
    const auto since = "since " + clock().toStdString() + ", ";
    EXPECT_THAT(
        texts, testing::UnorderedElementsAre("192.168.1.30", since + "12 values", "Disconnect 192.168.1.30",
                                             "this computer", since + "1 value", "Disconnect this computer"));
}

TEST_F(ClientListTest, AButtonAsksForTheClientOfItsRowAsItIsNow) {
    QSignalSpy asked(&list, &ClientList::disconnectRequested);
    show({client(1, "192.168.1.30"), client(2, "192.168.1.31")});
    buttons().at(1)->click();
    show({client(2, "192.168.1.31")});
    ASSERT_THAT(buttons(), SizeIs(1));
    EXPECT_EQ(buttons().at(0)->accessibleName(), "Disconnect 192.168.1.31");
    buttons().at(0)->click();
    ASSERT_EQ(asked.count(), 2);
    EXPECT_EQ(asked.at(0).at(0).value<std::int64_t>(), 2);
    EXPECT_EQ(asked.at(1).at(0).value<std::int64_t>(), 2);
}

TEST_F(ClientListTest, WhoseButtonWentDownIsMeantWhoeverIsInTheRowWhenItComesUp) {
    QSignalSpy asked(&list, &ClientList::disconnectRequested);
    list.show();
    show({client(1, "192.168.1.30"), client(2, "192.168.1.31"), client(3, "192.168.1.32")});
    auto* mouse = buttons().at(0);
    QTest::mousePress(mouse, Qt::LeftButton);
    show({client(2, "192.168.1.31"), client(3, "192.168.1.32")});
    QTest::mouseRelease(mouse, Qt::LeftButton);
    auto* key = buttons().at(0);
    QTest::keyPress(key, Qt::Key_Space);
    show({client(3, "192.168.1.32")});
    QTest::keyRelease(key, Qt::Key_Space);
    buttons().at(0)->click();
    ASSERT_EQ(asked.count(), 3);
    for (int i = 0; i < asked.count(); ++i)
        EXPECT_EQ(asked.at(i).at(0).value<std::int64_t>(), i + 1);
}

TEST_F(ClientListTest, OfACrowdItShowsTheFirstAndHowManyMore) {
    std::vector<PairedClient> crowd;
    for (int id = 1; id <= 20; ++id)
        crowd.push_back(client(id, "10.0.0." + std::to_string(id)));
    show(crowd);
    EXPECT_THAT(buttons(), SizeIs(ClientList::mostShown));
    EXPECT_THAT(test::textsFromTop(list), testing::Contains("and 12 more"));
    crowd.resize(3);
    show(crowd);
    EXPECT_THAT(buttons(), SizeIs(3));
    EXPECT_THAT(test::textsFromTop(list), testing::Not(testing::Contains("and 12 more")));
}

TEST_F(ClientListTest, HoldsInThePanelAlsoForLongAddresses) {
    show({client(1, "fd42:6c1e:1234:5678:9abc:def0:1234:5678", 20000)});
    EXPECT_LE(list.minimumSizeHint().width(), 360 - 2 * 24);
}

TEST(SinceText, HasTheDayOnlyWhereItIsNotToday) {
    const auto now = QDateTime::currentDateTimeUtc();
    const auto utc = [](const QDateTime& time) {
        return time.toString("yyyy-MM-ddTHH:mm:ssZ").toStdString();
    };
    const QLocale locale;
    const auto clock = locale.toString(now.toLocalTime().time(), QLocale::ShortFormat);
    EXPECT_EQ(sinceText(utc(now)), clock);
    const auto earlier = now.addDays(-3);
    EXPECT_EQ(sinceText(utc(earlier)),
              locale.toString(earlier.toLocalTime().date(), QLocale::ShortFormat) + " " + clock);
}

} // namespace
} // namespace tarnly
