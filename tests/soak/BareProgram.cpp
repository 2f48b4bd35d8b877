// A program that does nothing but answer on the bus, to tell how long that takes on this machine at the
// moment.

#include <QCoreApplication>
#include <QDBusAbstractAdaptor>
#include <QDBusConnection>

namespace {

class Bare final : public QDBusAbstractAdaptor {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "app.orbitledge.Bare")

public:
    explicit Bare(QObject *object)
        : QDBusAbstractAdaptor(object)
    {
    }
};

} // namespace

int main(int argc, char **argv)
{
    const QCoreApplication application(argc, argv);
    QObject object;
    new Bare(&object);
    QDBusConnection bus = QDBusConnection::sessionBus();
    if (!bus.registerObject(QStringLiteral("/app/orbitledge/Bare"), &object)
        || !bus.registerService(QStringLiteral("app.orbitledge.Bare")))
        return 1;
    return QCoreApplication::exec();
}

#include "BareProgram.moc"
