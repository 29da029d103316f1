#include "DataFactory.h"

#include "QtDataConfigurationWidget.h"

#include <gtest/gtest.h>

#include <memory>

namespace {

class PlainWidget : public QtDataConfigurationWidget
{
public:
    using QtDataConfigurationWidget::QtDataConfigurationWidget;
    bool apply() override { return true; }
};

class PlainRegistration : public DataFactory::Registration
{
public:
    explicit PlainRegistration(Qt::WindowFlags flags) : m_flags(flags) {}
    QString name() const override { return QStringLiteral("PlainWidget"); }
    QtDataConfigurationWidget* configurationWidget(Data* item, const QString& itemName,
                                                   QWidget* parent) const override
    {
        return new PlainWidget(item, itemName, parent, m_flags);
    }

private:
    Qt::WindowFlags m_flags;
};

DataFactory::Link linkTo(const QString& widgetName)
{
    return {QStringLiteral("Data"), widgetName, QStringLiteral("Label"), 0, QString()};
}

TEST(DataFactoryTest, MakesTheWidgetThatIsRegisteredUnderTheLinksName)
{
    DataFactory::Registration::registerWidget(new PlainRegistration({}));
    const DataPointer<Data> item(new Data);
    QWidget parent;
    auto* const widget = DataFactory::makeWidget(linkTo(QStringLiteral("PlainWidget")), item.data(),
                                                 QStringLiteral("first"), &parent);
    ASSERT_TRUE(widget);
    EXPECT_EQ(widget->parent(), &parent);
    EXPECT_EQ(widget->getData(), item.data());
    EXPECT_EQ(widget->getItemName(), QStringLiteral("first"));
    EXPECT_FALSE(widget->canSaveAsDefault());
    EXPECT_FALSE(DataFactory::makeWidget(linkTo(QStringLiteral("unknown")), item.data(), QString(),
                                         &parent));
}

TEST(DataFactoryTest, ALaterRegistrationOfTheSameNameReplacesTheFormer)
{
    DataFactory::Registration::registerWidget(new PlainRegistration({}));
    DataFactory::Registration::registerWidget(new PlainRegistration(Qt::Tool));
    const std::unique_ptr<QWidget> widget(DataFactory::makeWidget(
        linkTo(QStringLiteral("PlainWidget")), nullptr, QString(), nullptr));
    EXPECT_EQ(widget->windowType(), Qt::Tool);
}

TEST(DataFactoryTest, LinksStandInTheOrderMadeAndAClassHasOne)
{
    const int before = DataFactory::links().size();
    linkDataToWidget(QStringLiteral("A"), QStringLiteral("W1"), QStringLiteral("Label A"), 2,
                     QString());
    linkDataToWidget(QStringLiteral("B"), QStringLiteral("W2"), QStringLiteral("Label B"), 0,
                     QStringLiteral("more"));
    linkDataToWidget(QStringLiteral("A"), QStringLiteral("W3"), QStringLiteral("Other A"), 1,
                     QString());
    ASSERT_EQ(DataFactory::links().size(), before + 2);
    const DataFactory::Link first = DataFactory::links().at(before);
    const DataFactory::Link second = DataFactory::links().at(before + 1);
    EXPECT_EQ(first.className, QStringLiteral("A"));
    EXPECT_EQ(first.widgetName, QStringLiteral("W3"));
    EXPECT_EQ(first.label, QStringLiteral("Other A"));
    EXPECT_EQ(first.flags, 1);
    EXPECT_EQ(second.className, QStringLiteral("B"));
    EXPECT_EQ(second.extra, QStringLiteral("more"));
}

TEST(DataFactoryTest, AConfigurationWidgetForgetsAnItemThatIsDeleted)
{
    auto* const item = new Data;
    const PlainWidget widget(item, QStringLiteral("name"), nullptr, {});
    EXPECT_EQ(widget.getData(), item);
    delete item;
    EXPECT_FALSE(widget.getData());
}

} // namespace
