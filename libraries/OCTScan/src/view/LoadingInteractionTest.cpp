#include "LoadingInteraction.h"

#include "DialogDriver.h"

#include <QApplication>
#include <QTemporaryDir>

#include <gtest/gtest.h>

using kelp::oct::LoadingInteraction;

namespace {

TEST(LoadingInteraction, ShowsWhyAFileCouldNotBeCopied)
{
    const LoadingInteraction interaction;
    const QTemporaryDir folder;
    const QString missing = folder.filePath(QStringLiteral("missing.tif"));
    DialogDriver dialogs;
    dialogs.expectMessageContaining(QStringLiteral("Copying File Error"), missing);
    EXPECT_EQ(OCTScanLoadingUtils::AutoCopyFiles({missing}, folder.path(), true,
                                                 QStringLiteral("HRA_XML_")),
              QStringList{missing});
    EXPECT_FALSE(QApplication::overrideCursor());
}

TEST(LoadingInteraction, ShowsTheWaitingCursorWhileItIsBusy)
{
    LoadingInteraction interaction;
    interaction.setBusy(true);
    ASSERT_TRUE(QApplication::overrideCursor());
    EXPECT_EQ(QApplication::overrideCursor()->shape(), Qt::WaitCursor);
    interaction.setBusy(false);
    EXPECT_FALSE(QApplication::overrideCursor());
}

TEST(LoadingInteraction, ShowsNothingOnceItIsGone)
{
    {
        const LoadingInteraction interaction;
    }
    const QTemporaryDir folder;
    const DialogDriver dialogs;
    const QString missing = folder.filePath(QStringLiteral("missing.tif"));
    EXPECT_EQ(OCTScanLoadingUtils::AutoCopyFiles({missing}, folder.path(), true,
                                                 QStringLiteral("HRA_XML_")),
              QStringList{missing});
}

} // namespace
