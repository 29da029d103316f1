#pragma once

#include <QMap>
#include <QString>

#include <memory>

/// A registry of creators of T by name.
template <typename T, typename Argument = void>
class CaFactory
{
public:
    /// Base of a concrete creator.
    class Factory
    {
    public:
        virtual ~Factory() = default;
        /// A new instance owned by the caller.
        virtual T* createInstance() const = 0;
    };

    /// Takes the creator unless the name is taken already. Returns whether it was taken in.
    bool registerFactory(const QString& name, std::shared_ptr<const Factory> factory)
    {
        if (m_factories.contains(name)) {
            return false;
        }
        m_factories.insert(name, std::move(factory));
        return true;
    }

    bool contains(const QString& name) const { return m_factories.contains(name); }

    /// A new instance owned by the caller, or null for an unknown name.
    T* create(const QString& name) const
    {
        const auto found = m_factories.find(name);
        return found == m_factories.end() ? nullptr : (*found)->createInstance();
    }

private:
    QMap<QString, std::shared_ptr<const Factory>> m_factories;
};
