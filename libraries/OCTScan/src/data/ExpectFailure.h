#pragma once

#include "kelpException.h"

#include <QString>

#include <gtest/gtest.h>

#include <typeinfo>

namespace kelp::oct::test {

/// What the expression's failure says. Fails the test unless it is of exactly this class.
template <typename Failure, typename Function>
QString failureText(Function&& function)
{
    try {
        function();
    } catch (const Exception& exception) {
        EXPECT_TRUE(typeid(exception) == typeid(Failure)) << exception.what();
        return QString::fromUtf8(exception.what());
    }
    ADD_FAILURE() << "no failure was raised";
    return QString();
}

/// The same text as a test prints it.
template <typename Failure, typename Function>
std::string failure(Function&& function)
{
    return failureText<Failure>(std::forward<Function>(function)).toStdString();
}

} // namespace kelp::oct::test
