#include "platform/HostProfile.h"

namespace quillnest
{

HostProfile HostProfile::appleSilicon()
{
    return {
        .machineWord = QStringLiteral("Mac"),
        .systemName = QStringLiteral("macOS"),
        .imageAbi = QStringLiteral("arm64-v8a"),
        .cpuArchitecture = QStringLiteral("arm64"),
        .processorName = QStringLiteral("Apple Silicon"),
        .sdkHostOs = QStringLiteral("macosx"),
        .sdkHostArchitectures = {QStringLiteral("aarch64"), QStringLiteral("arm64")},
        .developerSdk = QStringLiteral("Library/Android/sdk"),
        .developerAvdName = QStringLiteral("Quillnest_Android35"),
        .javaHomes
        = {QStringLiteral("/opt/homebrew/opt/openjdk@17/libexec/openjdk.jdk/Contents/Home"),
           QStringLiteral("/opt/homebrew/Cellar/openjdk@17/17.0.20.1/libexec/openjdk.jdk/Contents/Home")},
        .developmentScrcpy = QStringLiteral("/opt/homebrew/bin/scrcpy"),
    };
}

HostProfile HostProfile::linuxX86_64()
{
    return {
        .machineWord = QStringLiteral("PC"),
        .systemName = QStringLiteral("The desktop"),
        .imageAbi = QStringLiteral("x86_64"),
        .cpuArchitecture = QStringLiteral("x86_64"),
        .processorName = QStringLiteral("64-bit Linux"),
        .sdkHostOs = QStringLiteral("linux"),
        .sdkHostArchitectures = {QStringLiteral("x64"), QStringLiteral("x86_64")},
        .developerSdk = QStringLiteral("Android/Sdk"),
        .developerAvdName = QStringLiteral("Quillnest_Android35"),
        .javaHomes
        = {QStringLiteral("/usr/lib/jvm/java-17-openjdk-amd64"), QStringLiteral("/usr/lib/jvm/default-java")},
        .developmentScrcpy = QStringLiteral("/usr/bin/scrcpy"),
    };
}

} // namespace quillnest
