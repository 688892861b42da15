#include "Sound/Fmod.h"

#include "Sound/BuiltinSystem.h"
#include "Sound/InstalledLibrary.h"
#include "model/MessageLog.h"

#include <optional>

namespace {

const char *const source = "Sound/SystemCreate";
const char *const function = "FMOD_RESULT FMOD::System_Create(FMOD::System **)";

enum class Provider { Automatic, Builtin, Library };

Provider chosenProvider()
{
    const QByteArray choice = qgetenv("QUILLMOOR_SOUND");
    if (choice == "builtin")
        return Provider::Builtin;
    if (choice == "library")
        return Provider::Library;
    if (!choice.isEmpty())
        MessageLog::warning(source, function,
                            QStringLiteral("QUILLMOOR_SOUND is \"%1\", but only \"builtin\" and "
                                           "\"library\" are known. It is ignored.")
                                .arg(QString::fromLocal8Bit(choice)));
    return Provider::Automatic;
}

FMOD_RESULT createWithoutLibrary(Provider provider, FMOD::System **system)
{
    if (provider == Provider::Automatic)
        return createBuiltinSystem(system);
    MessageLog::critical(source, function,
                         QStringLiteral("QUILLMOOR_SOUND asks for the installed sound library, "
                                        "but no usable one was found."));
    return FMOD_ERR_PLUGIN_MISSING;
}

} // namespace

FMOD_RESULT FMOD::System_Create(System **system)
{
    *system = nullptr;
    const Provider provider = chosenProvider();
    if (provider == Provider::Builtin)
        return createBuiltinSystem(system);
    const std::optional<InstalledLibrary> library = InstalledLibrary::find();
    return library ? library->createSystem(system) : createWithoutLibrary(provider, system);
}
