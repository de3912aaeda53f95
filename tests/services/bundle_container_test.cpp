// Bundles installed from files and directories, good and bad. Framework and bundles live as long as
// the process, so that each test has bundles of its own names.

#include "support/files.hpp"
#include "support/ordinary_user.hpp"
#include "support/zip.hpp"

#include <tarn/services/BundleContainer.hpp>

#include <algorithm>
#include <cerrno>
#include <cstdint>
#include <cstring>
#include <elf.h>
#include <fcntl.h>
#include <filesystem>
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <memory>
#include <stdexcept>
#include <string>
#include <sys/stat.h>
#include <sys/syscall.h>
#include <thread>
#include <unistd.h>
#include <vector>

namespace tarn::tests {

namespace {

int readsUntilError = -1; // negative if none fails

using cppmicroservices::Bundle;
using testing::ElementsAre;
using testing::EndsWith;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::StartsWith;
using utils::services::BundleContainer;
using namespace std::string_literals;

std::u16string utf16(const std::string& path)
{
    return std::filesystem::path(path).u16string();
}

std::vector<Bundle> install(const std::u16string& path)
{
    BundleContainer container(path);
    return {container.getBundles().begin(), container.getBundles().end()};
}

std::vector<Bundle> install(const std::string& path)
{
    return install(utf16(path));
}

std::vector<std::string> namesOf(const std::vector<Bundle>& bundles)
{
    std::vector<std::string> names;
    for (const Bundle& bundle : bundles) {
        names.push_back(bundle.GetSymbolicName());
    }
    return names;
}

/// What is said when @p path is refused.
std::string refusal(const auto& path)
{
    errno = ENOMEM; // of something before, which does not count
    try {
        const std::vector<std::string> names = namesOf(install(path));
        return "installed " + testing::PrintToString(names) + ": " + std::to_string(names.size());
    } catch (const std::runtime_error& error) {
        return error.what();
    }
}

/// Puts a bundle into @p file and installs it, which shows that no other file has brought it.
void expectNotInstalled(const std::string& name, const std::string& file)
{
    writeFile(file, bundleZip(name));
    EXPECT_THAT(namesOf(install(file)), ElementsAre(name));
}

/// A bundle that no other archive has.
std::string newBundle()
{
    static int bundles = 0;
    return bundleZip("found-" + std::to_string(++bundles));
}

/// Expects that each file is installed or refused as the text beside it says.
void expectOutcomes(const std::vector<std::pair<std::string, std::string>>& files)
{
    const Directory directory;
    for (std::size_t row = 0; row < files.size(); ++row) {
        const std::string file = directory / std::to_string(row);
        writeFile(file, files[row].first);
        EXPECT_THAT(refusal(file), HasSubstr(files[row].second)) << "row " << row;
    }
}

TEST(BundleContainer, HoldsTheBundlesOfAnArchiveInTheOrderOfTheirNames)
{
    BundleContainer container(utf16(BUNDLE_ARCHIVE));
    const BundleContainer::Bundles bundles = container.getBundles();
    ASSERT_EQ(bundles.size(), 2u);
    const Bundle& first = *bundles.begin();
    const Bundle& second = *std::next(bundles.begin());
    EXPECT_EQ(first.GetSymbolicName(), "harbour");
    EXPECT_EQ(second.GetSymbolicName(), "lighthouse");
    EXPECT_EQ(first.GetLocation(), BUNDLE_ARCHIVE);
    EXPECT_GE(first.GetBundleId(), 1);
    EXPECT_TRUE(first && first < second && first != second && !(second < first));
    EXPECT_TRUE(Bundle() < first && !(first < Bundle()));
    Bundle copy;
    copy = first;
    Bundle moved;
    moved = std::move(copy);
    EXPECT_EQ(moved, first);

    EXPECT_EQ(container.getBundles(), bundles);
    BundleContainer other(utf16(BUNDLE_ARCHIVE));
    EXPECT_NE(other.getBundles(), bundles);
    EXPECT_NE(BundleContainer::Bundles(bundles.begin(), bundles.begin()), bundles);
    EXPECT_TRUE(std::ranges::equal(other.getBundles(), bundles));

    const Directory directory;
    writeFile(directory / "next", newBundle());
    EXPECT_LT(second, install(directory / "next").front());
}

TEST(BundleContainer, FindsArchivesInSharedLibraries)
{
    const Directory directory;
    const std::string library = readFile(SHARED_LIBRARY);
    expectOutcomes({{library + newBundle(), "installed {"},
                    {library + newBundle() + "~signature appended~", "installed {"}});
    // These bundles come from another file if this process has run the test above.
    std::filesystem::copy_file(LINKED_BUNDLES, directory / "linked.so");
    EXPECT_THAT(refusal(directory / "linked.so"),
                testing::AnyOf(HasSubstr("harbour\", \"lighthouse"), HasSubstr("installed already"),
                               HasSubstr("already installed")));
}

/// What an object file begins with: its header and the table of its sections.
struct ObjectTables
{
    Elf64_Ehdr header;
    Elf64_Shdr section;
    Elf64_Shdr names;
};

/// An object file with a section and, at its end, the section's name.
std::string objectFile(
    const std::string& name, const std::string& contents,
    void (*change)(ObjectTables&) = [](ObjectTables&) {})
{
    ObjectTables tables{};
    std::memcpy(tables.header.e_ident, "\x7F\x45LF\2\1", 6); // 64 bits, little-endian
    tables.header.e_shoff = sizeof tables.header;
    tables.header.e_shentsize = sizeof tables.section;
    tables.header.e_shnum = 2;
    tables.header.e_shstrndx = 1;
    tables.section.sh_name = 1;
    tables.section.sh_type = SHT_PROGBITS;
    tables.section.sh_offset = sizeof tables;
    tables.section.sh_size = contents.size();
    tables.names.sh_type = SHT_STRTAB;
    tables.names.sh_offset = sizeof tables + contents.size();
    tables.names.sh_size = name.size() + 2;
    change(tables);
    return std::string(reinterpret_cast<const char*>(&tables), sizeof tables) + contents + '\0' +
           name + '\0';
}

TEST(BundleContainer, FindsTheSectionOfAnObjectFile)
{
    const std::string resources = ".us_resources";
    // An archive that begins with its directory. The last bytes of its entry are to be behind it.
    constexpr std::size_t COMMENT = 5000;
    constexpr std::size_t BEHIND = 20;
    const std::string archive = newBundle();
    const std::size_t entrySize = archive.rfind("PK\1\2");
    std::string across = archive.substr(entrySize);
    across.replace(42, 4, detail::bytesOf(across.size() + COMMENT, 4));
    across.replace(across.size() - 6, 6,
                   detail::bytesOf(0, 4) + detail::bytesOf(COMMENT + entrySize - BEHIND, 2));
    across += std::string(COMMENT, '~') + archive.substr(0, entrySize);
    const auto nothingInFile = [](ObjectTables& tables) {
        tables.section.sh_type = SHT_NOBITS;
        tables.section.sh_size = 40;
    };
    std::vector<std::pair<std::string, std::string>> files = {
        {objectFile(resources, newBundle()), "installed {"},
        {objectFile(resources, "text"), "the archive's directory is damaged"},
        {objectFile(resources, across,
                    [](ObjectTables& tables) { tables.section.sh_size -= BEHIND; }),
         "manifest.json is damaged"},
        // The section counts, whatever is behind it.
        {objectFile(resources, bundleZip("in-section")) + newBundle(), "{ \"in-section\" }"},
        // Other sections, with an archive behind them.
        {objectFile(".us_resource", "text") + newBundle(), "installed {"},
        {objectFile(".us_resources2", "text") + newBundle(), "installed {"},
        {objectFile(resources, "") + newBundle(), "installed {"},
        {objectFile("other", "text", nothingInFile) + newBundle().substr(0, 60),
         "the archive is cut short"},
    };
    // What is no object file of this system, or no section in it.
    static constexpr auto BEYOND = ~std::uint64_t{0};
    for (void (*const change)(ObjectTables&) : {
             +[](ObjectTables& tables) { tables.header.e_ident[EI_MAG3] = 'f'; },
             +[](ObjectTables& tables) { tables.header.e_ident[EI_CLASS] = ELFCLASS32; },
             +[](ObjectTables& tables) { tables.header.e_ident[EI_DATA] = ELFDATA2MSB; },
             +[](ObjectTables& tables) { --tables.header.e_shentsize; },
             +[](ObjectTables& tables) { tables.header.e_shstrndx = tables.header.e_shnum; },
             +[](ObjectTables& tables) { tables.header.e_shnum = 0xFFFF; },
             +[](ObjectTables& tables) { tables.header.e_shoff = BEYOND; },
             +[](ObjectTables& tables) { tables.section.sh_type = SHT_NOBITS; },
             +[](ObjectTables& tables) { tables.section.sh_type = SHT_NULL; },
             +[](ObjectTables& tables) { tables.section.sh_offset = BEYOND; },
             +[](ObjectTables& tables) { tables.section.sh_size = BEYOND; },
             +[](ObjectTables& tables) { tables.section.sh_size = 500; },
             +[](ObjectTables& tables) { tables.section.sh_name = 0xFFFF; },
             +[](ObjectTables& tables) { tables.names.sh_offset = BEYOND; },
         }) {
        files.emplace_back(objectFile(resources, "text", change) + newBundle(), "installed {");
    }
    expectOutcomes(files);
}

TEST(BundleContainer, FindsTheEndOfAnArchive)
{
    using detail::bytesOf;
    const auto commented = [](std::uint16_t claimed, std::size_t given) {
        std::string archive = newBundle();
        archive.replace(archive.size() - 2, 2, bytesOf(claimed, 2));
        return archive + std::string(given, 'c');
    };
    const std::string archive = newBundle();
    const std::string directory = archive.substr(archive.rfind("PK\1\2"));
    std::string longName = archive;
    longName.replace(archive.rfind("PK\1\2") + 28, 2, bytesOf(500, 2));
    std::string mixed64 = zip64(newBundle()); // the size of its directory needs no 64 bits
    mixed64.replace(mixed64.size() - 10, 4, bytesOf(9, 4));
    const std::string locator = "PK\6\7" + std::string(16, '\0');
    std::vector<std::pair<std::string, std::string>> files = {
        {commented(65535, 65535), "installed {"},
        {commented(65535, 65534), "the archive is cut short"},
        {commented(65535, 65536), "the archive is cut short"},
        {commented(5, 4), "the archive is cut short"},
        {commented(5, 6), "installed {"},
        // What looks like an end, behind an archive.
        {newBundle() + "PK\5\6", "installed {"},
        {newBundle() + "PK\5\6" + std::string(99, 7), "installed {"},
        // A directory that begins with the file, and one that would begin before it.
        {directory + '~', "the archive's directory is damaged"},
        {directory.substr(1) + '~', "the file holds no bundle"},
        {"text" + zip({}), "the file holds no bundle"},
        {longName + std::string(999, '~'), "the archive's directory is damaged"},
        // The form for 64 bits.
        {zip64(newBundle()), "installed {"},
        {zip64(newBundle()) + '~', "installed {"},
        {mixed64 + '~', "installed {"},
        {zip64(newBundle(), 1), "the archive's directory is damaged"},
        {locator + ZIP64_END + '~', "the archive's directory is damaged"},
        {locator.substr(1) + ZIP64_END + '~', "the file holds no bundle"},
        {'~' + locator.substr(0, 19) + ZIP64_END + '~', "the file holds no bundle"},
    };
    // The edge of a block that is read from the file lies anywhere in the archive.
    for (std::size_t size = 4096; size > 4096 - archive.size(); --size) {
        files.emplace_back(std::string(size, '~') + newBundle(), "installed {");
    }
    expectOutcomes(files);
    // Where 32 bits do not reach.
    const Directory huge;
    writeFile(huge / "file", "");
    std::filesystem::resize_file(huge / "file", std::uintmax_t{5} << 30);
    std::ofstream(huge / "file", std::ios::binary | std::ios::app) << newBundle();
    EXPECT_THAT(refusal(huge / "file"), HasSubstr("installed {"));
}

TEST(BundleContainer, GivesTheSameBundlesForTheSameFile)
{
    const Directory directory;
    const std::string file = directory / "same.zip";
    writeFile(file, bundleZip("same"));
    const std::vector<Bundle> bundles = install(file);
    const std::filesystem::path before = std::filesystem::current_path();
    std::filesystem::current_path(directory / "");
    EXPECT_EQ(install(u"same.zip"), bundles);
    EXPECT_EQ(install(u".//same.zip/."), bundles);
    std::filesystem::current_path(before);
    EXPECT_EQ(install(directory / ".//same.zip"), bundles);

    // Of the same name and version, but of another file.
    std::filesystem::copy_file(file, directory / "copy.zip");
    EXPECT_THAT(refusal(directory / "copy.zip"), StartsWith(directory / "copy.zip: "));
    writeFile(directory / "newer.zip", bundleZip("same", "1.0.1"));
    EXPECT_THAT(namesOf(install(directory / "newer.zip")), ElementsAre("same"));
}

TEST(BundleContainer, KnowsAFileByEveryPathThatLeadsToIt)
{
    const Directory directory;
    const std::string file = directory / "m-file.zip";
    writeFile(file, bundleZip("by-every-path"));
    std::filesystem::create_directory(directory / "inside");
    std::filesystem::create_directory_symlink(".", directory / "here");
    std::filesystem::create_symlink("m-file.zip", directory / "a-link.zip");
    std::filesystem::create_symlink("a-link.zip", directory / "z-link-to-link.zip");
    std::filesystem::create_hard_link(file, directory / "z-hard-link.zip");
    // All names in one directory, the first of which is a link.
    const std::vector<Bundle> bundles = install(directory / "");
    EXPECT_THAT(namesOf(bundles), ElementsAre("by-every-path"));
    EXPECT_EQ(bundles.front().GetLocation(), file);
    for (const char* const path :
         {"m-file.zip", "a-link.zip", "z-link-to-link.zip", "z-hard-link.zip", "here/m-file.zip",
          "here/here/a-link.zip", "inside/../m-file.zip", "here", "."}) {
        EXPECT_EQ(install(directory / path), bundles) << path;
    }
    // A component `..` after a link leads from where the link does.
    std::filesystem::create_directory(directory / "inside/deeper");
    std::filesystem::create_directory_symlink("inside/deeper", directory / "down");
    writeFile(directory / "inside/up", bundleZip("by-a-link-first"));
    EXPECT_EQ(install(directory / "down/../up").front().GetLocation(), directory / "inside/up");
    // A link that has taken the place of the file, which has another name now.
    std::filesystem::rename(file, directory / "moved.zip");
    std::filesystem::create_symlink("moved.zip", file);
    EXPECT_EQ(install(directory / "moved.zip"), bundles);
    // A link that leads to another file now, and a file that takes the place of one removed.
    writeFile(directory / "other", bundleZip("of-the-other"));
    std::filesystem::remove(directory / "a-link.zip");
    std::filesystem::create_symlink("other", directory / "a-link.zip");
    EXPECT_THAT(namesOf(install(directory / "a-link.zip")), ElementsAre("of-the-other"));
    writeFile(directory / "spare", "");
    std::filesystem::rename(directory / "spare", directory / "other");
    for (int i = 0; i < 20; ++i) {
        // Among these is one with the number of a file that another one has replaced.
        const std::string name = "later-" + std::to_string(i);
        writeFile(directory / name, bundleZip(name));
        EXPECT_THAT(namesOf(install(directory / name)), ElementsAre(name));
        // Its path is the one that counts, not that of the file before.
        std::filesystem::create_hard_link(directory / name, directory / "again");
        EXPECT_THAT(namesOf(install(directory / "again")), ElementsAre(name));
        std::filesystem::remove(directory / "again");
        std::filesystem::remove(directory / name);
    }
}

TEST(BundleContainer, InstallsADirectoryInTheOrderOfItsFiles)
{
    const Directory directory;
    writeFile(directory / ".b.zip", bundleZip("of-b"));
    writeFile(directory / "a.so", readFile(SHARED_LIBRARY) + bundleZip("of-a"));
    writeFile(directory / "\xFF.zip", bundleZip("of-name-in-no-encoding"));
    std::filesystem::create_symlink("b2", directory / "c.zip");
    writeFile(directory / "b2", bundleZip("of-link"));
    writeFile(directory / ".zip", bundleZip("of-ending"));
    // No bundles, or not to be looked for.
    writeFile(directory / "plain.so", readFile(SHARED_LIBRARY));
    writeFile(directory / "constant.so", readFile(SHARED_LIBRARY) + "PK\5\6" + std::string(99, 7));
    writeFile(directory / "empty.zip", zip({}));
    writeFile(directory / "nothing.zip", "");
    writeFile(directory / "text.zip", "text");
    writeFile(directory / "data.zip", zip({{"readme", "text"}, {"folder/readme", "text"}}));
    writeFile(directory / "d.zip.old", bundleZip("of-other-ending"));
    writeFile(directory / "libd.so.1", bundleZip("of-other-ending"));
    writeFile(directory / "d.ZIP", bundleZip("of-other-ending"));
    std::filesystem::create_directory(directory / "e.zip");
    writeFile(directory / "e.zip/f.zip", bundleZip("of-directory-inside"));
    ASSERT_EQ(::mkfifo((directory / "pipe.so").c_str(), 0600), 0);

    const std::vector<Bundle> bundles = install(directory / "");
    EXPECT_THAT(namesOf(bundles),
                ElementsAre("of-b", "of-ending", "of-a", "of-link", "of-name-in-no-encoding"));
    EXPECT_EQ(bundles.front().GetLocation(), directory / ".b.zip");
    EXPECT_EQ(install(directory / "."), bundles);

    std::filesystem::create_directory(directory / "none");
    EXPECT_THAT(install(directory / "none"), IsEmpty());
}

TEST(BundleContainer, InstallsNothingOfADirectoryWithABadFile)
{
    const Directory directory;
    const std::pair<std::string, std::string> cases[] = {
        {"cut.zip", bundleZip("cut").substr(0, 60)},
        {"cut.so", readFile(SHARED_LIBRARY) + bundleZip("cut").substr(0, 60)},
        {"damaged.zip", zip({{"damaged/manifest.json", "{}"}})},
        {"twice.zip", bundleZip("good")},
    };
    for (const auto& [name, contents] : cases) {
        const std::string bad = directory / "z-" + name;
        writeFile(directory / "good.zip", bundleZip("good"));
        writeFile(bad, contents);
        EXPECT_THAT(refusal(directory / ""), StartsWith(bad + ": "));
        std::filesystem::remove(bad);
    }
    std::filesystem::create_symlink("missing", directory / "link.so");
    EXPECT_THAT(refusal(directory / ""), StartsWith(directory / "link.so: No such file"));
    std::filesystem::remove(directory / "good.zip");
    expectNotInstalled("good", directory / "other.zip");
}

TEST(BundleContainer, SaysWhatIsWrongWithAFile)
{
    const Directory directory;
    const std::string good = bundleZip("refused");
    const std::string goodManifest = R"({"bundle.symbolic_name":"refused"})";
    const auto withEntry = [&](const ZipEntry& entry) {
        return zip({{"refused/manifest.json", goodManifest}, entry});
    };
    const auto withManifest = [](const std::string& json) {
        return zip({{"refused/manifest.json", json}});
    };
    std::string directoryDamaged = good;
    directoryDamaged[good.rfind("PK\1\2")] = 'Q';
    std::string entryDamaged = good;
    entryDamaged[good.find("symbolic")] = 'S';
    const std::pair<std::string, std::string> cases[] = {
        {"", "the file holds no bundle"},
        {"text", "the file holds no bundle"},
        {zip({}), "the file holds no bundle"},
        {zip({{"manifest.json", goodManifest}}), "the file holds no bundle"},
        {zip({{"a/b/manifest.json", goodManifest}}), "the file holds no bundle"},
        {readFile(SHARED_LIBRARY), "the file holds no bundle"},
        // Damage.
        {good.substr(0, good.size() - 1), "the archive is cut short"},
        {good.substr(0, 4), "the archive is cut short"},
        {directoryDamaged, "the archive's directory is damaged"},
        {readFile(SHARED_LIBRARY) + directoryDamaged, "the archive's directory is damaged"},
        {zip({{"refused/manifest.json", goodManifest}}, 3), "the archive's directory is damaged"},
        {entryDamaged, "refused/manifest.json is damaged"},
        {zip({{"refused/manifest.json", goodManifest, {}, 1}}), "refused/manifest.json is damaged"},
        {zip({{"refused/manifest.json", goodManifest, {}, {}, 0, 99}}),
         "refused/manifest.json is damaged"},
        {zip({{"refused/manifest.json", goodManifest, {}, {}, 1}}),
         "refused/manifest.json is encrypted"},
        // What would take too much memory, or lead out of the archive.
        {zip({{"refused/manifest.json", goodManifest, 4'000'000'000}}), "is too long: 4000000000"},
        {zip({{"refused/manifest.json", goodManifest, 0xFFFFFFFF}}),
         "refused/manifest.json gives its size in 64 bits"},
        {zip({{"refused/manifest.json", goodManifest, 1'000'000}}), "manifest.json is damaged"},
        {withManifest(std::string(900'000, '[')), "nested deeper than 100 levels"},
        {withManifest("{\"a\":" + std::string(100, '[')), "nested deeper than 100 levels"},
        {withManifest("{\"a\":" + std::string(99, '[')), "refused/manifest.json: Invalid value"},
        {zip({{"../manifest.json", goodManifest}}), "../manifest.json leads out of the archive"},
        // Manifests.
        {withEntry({"other/", ""}), "the bundle other has no manifest.json"},
        {withEntry({"refused/manifest.json", goodManifest}),
         "refused/manifest.json is there twice"},
        {withManifest(""), "refused/manifest.json: The document is empty"},
        {withManifest('[' + goodManifest + ']'), "refused/manifest.json: not a JSON object"},
        {withManifest("{\"a\":1,}"), "(byte 8)"},
        {withManifest(goodManifest + " //"), "(byte 36)"},
        {withManifest(goodManifest + "\0x"s), "a NUL (byte 35)"},
        {withManifest("{}"), "no bundle.symbolic_name"},
        {withManifest(R"({"x":{"bundle.symbolic_name":"x"}})"), "no bundle.symbolic_name"},
        {withManifest(R"({"bundle.symbolic_name":""})"), "no bundle.symbolic_name"},
        {withManifest(R"({"bundle.symbolic_name\u0000":"x"})"), "no bundle.symbolic_name"},
        {withManifest(R"({"bundle.symbolic_name":"%"})"), "no bundle.symbolic_name"},
        {withManifest(R"({"bundle.symbolic_name":7})"), "no bundle.symbolic_name"},
        {withManifest(R"({"bundle.symbolic_name":{"a":"x"}})"), "no bundle.symbolic_name"},
        {withManifest(R"({"bundle.symbolic_name":"a","BUNDLE.Version":1})"), "is not a string"},
        {withManifest(R"({"bundle.symbolic_name":"a","bundle.version":["1"]})"), "is not a string"},
        {withManifest(R"({"bundle.symbolic_name":"x","other":"a","bundle.version":"1\u0000x"})"),
         "refused/manifest.json: \"1"},
    };
    for (const auto& [contents, problem] : cases) {
        writeFile(directory / "bad.zip", contents);
        const std::string said = refusal(directory / "bad.zip");
        EXPECT_THAT(said, StartsWith(directory / "bad.zip: ")) << problem;
        EXPECT_THAT(said, HasSubstr(problem));
    }
    expectNotInstalled("refused", directory / "good.zip");
}

TEST(BundleContainer, RefusesNamesThatLeadOutOfTheArchive)
{
    const Directory directory;
    const auto problem = [&](const std::string& name) {
        const std::string manifest = R"({"bundle.symbolic_name":"x"})";
        writeFile(directory / "bad.zip",
                  zip({{"refused/manifest.json", manifest}, {name, "x"}, {"z/a", "x"}}));
        return refusal(directory / "bad.zip");
    };
    for (const std::string& name :
         {""s, ".."s, "../a"s, "refused/.."s, "refused/../a"s, "refused/a/.."s, "/"s, "/refused"s,
          "//refused"s, "\0"s, "refused/a\0b"s}) {
        EXPECT_THAT(problem(name), EndsWith("the entry " + name.substr(0, name.find('\0')) +
                                            " leads out of the archive"));
    }
    // Nothing is wrong with these, so the next entry is refused.
    for (const std::string& name :
         {"..a"s, "refused/..."s, "refused/..a"s, "refused/a.."s, "refused/a../"s, "refused//a"s,
          "refused/./a"s, "refused/..\\..\\a"s, "refused/amanifest.json"s,
          "refused/" + std::string(65527, 'a')}) {
        EXPECT_THAT(problem(name), EndsWith("the bundle z has no manifest.json"))
            << name.substr(0, 99);
    }
    EXPECT_THAT(problem("./a"), EndsWith("the bundle . has no manifest.json"));
}

TEST(BundleContainer, ComparesVersionsInFull)
{
    const Directory directory;
    const std::tuple<std::string, std::string, std::string> cases[] = {
        {"1", "1.0.0", "already"},           {"2.03", "2.3.0", "already"},
        {"1.2.3.q", "1.2.3.q", "already"},   {"1.2.3", "1.65538.3", "installed {"},
        {"1.2.3", "1.2.4", "installed {"},   {"1.2.3", "2.2.3", "installed {"},
        {"1.2.3", "1.2.3.a", "installed {"}, {"1.2.3.0aAzZ9_-", "1.2.3.0aAzZ9-_", "installed {"},
    };
    for (const auto& [first, second, outcome] : cases) {
        const std::string name = "versions-" + std::to_string(&first - &std::get<0>(cases[0]));
        writeFile(directory / "1-" + name, bundleZip(name, first));
        EXPECT_THAT(refusal(directory / "1-" + name), HasSubstr("installed {")) << first;
        writeFile(directory / "2-" + name, bundleZip(name, second));
        EXPECT_THAT(refusal(directory / "2-" + name), HasSubstr(outcome)) << first << ' ' << second;
    }
    expectOutcomes({{zip({{"none/manifest.json", R"({"BUNDLE.SYMBOLIC_NAME":"x"})"},
                          {"None/manifest.json", R"({"bundle.symbolic_name":"x"})"}}),
                     "installed {"},
                    {bundleZip("none", "0.0.0"), "already"}});
    for (const std::string version :
         {"",        ".",       "1.",      ".1",      "1..2",       "1.2.3.",   "-1",
          "+1",      " 1",      "1 ",      "1.2x",    "4294967296", "1.2.3.a.", "1.2.3.4.5",
          "1.2.3./", "1.2.3.:", "1.2.3.@", "1.2.3.[", "1.2.3.`",    "1.2.3.{",  "1.2.3.\u00E9"}) {
        writeFile(directory / "bad", bundleZip("bad", version));
        EXPECT_THAT(refusal(directory / "bad"), EndsWith('"' + version + "\" is not a version"));
    }
}

TEST(BundleContainer, TakesAsMuchAsTheLimitsAllow)
{
    // An archive of so many bundles with manifests of so many bytes in all, the first of so many.
    const auto archive = [](std::size_t bundles, std::size_t bytes, std::size_t first) {
        static int archives = 0;
        const std::string prefix = "limit-" + std::to_string(++archives) + '-';
        std::vector<ZipEntry> entries;
        for (std::size_t i = 0; i < bundles; ++i) {
            const std::size_t left = bundles - i;
            const std::size_t size = i == 0 && first != 0 ? first : (bytes + left - 1) / left;
            std::string manifest = R"({"bundle.symbolic_name":"x"})";
            manifest.resize(std::max(manifest.size(), size), ' ');
            bytes -= std::min(bytes, manifest.size());
            entries.push_back({prefix + std::to_string(i) + "/manifest.json", manifest});
        }
        return zip(entries);
    };
    constexpr std::size_t MEGABYTE = 1024 * 1024;
    expectOutcomes({
        {archive(1000, 0, 0), "}: 1000"},
        {archive(1001, 0, 0), "more than 1000 bundles"},
        {archive(1, 0, MEGABYTE), "installed {"},
        {archive(1, 0, MEGABYTE + 1), "is too long: 1048577 bytes, 1048576 at most"},
        {archive(20, 16 * MEGABYTE, 0), "installed {"},
        {archive(20, 16 * MEGABYTE + 1, 0), "too long together: more than 16777216 bytes"},
    });
}

TEST(BundleContainer, TakesManifestsInEveryForm)
{
    const Directory directory;
    const std::string manifests[] = {
        R"({"bundle.symbolic_name":"%x"})",
        R"({"BUNDLE.Symbolic_Name":"x","bundle.version":"1.2.3.beta-1_A"})",
        R"({"bundle.symbolic_name":"x","bundle.symbolic_name":"","bundle.version":"7"})",
        R"({"bundle.version":"0.1","deep":[[{"bundle.version":"no"}]],"bundle.symbolic_name":"x"})",
    };
    for (const std::string& manifest : manifests) {
        const std::string name = "form-" + std::to_string(&manifest - manifests);
        writeFile(directory / name, zip({{name + "/manifest.json", manifest}, {"loose", "x"}}));
        EXPECT_THAT(refusal(directory / name), HasSubstr("installed {"));
    }
}

TEST(BundleContainer, TakesPathsOfEveryKindAndRefusesWhatIsNone)
{
    EXPECT_THAT(install(u""), IsEmpty());

    const Directory directory;
    writeFile(directory / "caf\u00E9 \u4E2D\u6587 \U0001F600.zip", bundleZip("non-ascii"));
    EXPECT_THAT(namesOf(install(utf16(directory / "") + u"caf\u00E9 \u4E2D\u6587 \U0001F600.zip")),
                ElementsAre("non-ascii"));

    std::string deep = directory / "";
    while (deep.size() < 3800) {
        deep += std::string(200, 'd') + '/';
    }
    std::filesystem::create_directories(deep);
    writeFile(deep + "long.zip", bundleZip("long-path"));
    EXPECT_THAT(namesOf(install(deep + "long.zip")), ElementsAre("long-path"));
    std::string roundabout = directory / "";
    for (int i = 0; i < 10'000; ++i) {
        roundabout += ".//";
    }
    EXPECT_EQ(install(roundabout + deep.substr((directory / "").size()) + "long.zip"),
              install(deep + "long.zip"));

    ASSERT_EQ(::mkfifo((directory / "pipe").c_str(), 0600), 0);
    std::filesystem::create_symlink("loop", directory / "loop");
    const std::u16string base = utf16(directory / "");
    const std::pair<std::u16string, std::string> cases[] = {
        {base + u"missing.zip", directory / "missing.zip: No such file or directory"},
        {base + std::u16string(300, u'x'), "File name too long"},
        {base + u"pipe/a", "pipe/a: Not a directory"},
        {base + u"loop", "loop: Too many levels of symbolic links"},
        {base + u"pipe", "pipe: neither a file nor a directory"},
        {u"/dev/null", "/dev/null: neither a file nor a directory"},
        {u"/tmp/a\xD800", "\"/tmp/a\uFFFD\" cannot be a path: unpaired surrogate at index 6"},
        {u"/tmp/\0b"s, "\"/tmp/\" cannot be a path: NUL at index 5"},
    };
    // Without a standard input, the first file that is opened takes its number.
    const int input = ::dup(0);
    ::close(0);
    for (const auto& [path, problem] : cases) {
        EXPECT_THAT(refusal(path), HasSubstr(problem));
    }
    EXPECT_EQ(::dup(input), 0) << "a file is left open";
    ::close(input);
}

TEST(BundleContainer, SaysThatAFileCannotBeReadToTheEnd)
{
    const Directory directory;
    writeFile(directory / "file", newBundle());
    writeFile(directory / "short", "P");
    std::string said;
    int reads = 0;
    for (readsUntilError = 0; !said.starts_with("installed {"); readsUntilError = ++reads) {
        said = refusal(directory / "file");
        EXPECT_THAT(said, testing::AnyOf(StartsWith("installed {"), EndsWith(std::strerror(EIO))));
    }
    EXPECT_GT(reads, 3);
    EXPECT_THAT(refusal(directory / "short"), EndsWith("the file holds no bundle"));
    readsUntilError = -1;
}

TEST(BundleContainer, SaysWhatItMayNotRead)
{
    const Directory directory;
    for (const std::string name : {"unlisted", "closed", "open"}) {
        std::filesystem::create_directory(directory / name);
        writeFile(directory / name + "/a.zip", bundleZip(name));
    }
    const std::pair<std::string, unsigned> permissions[] = {
        {"", 0755},    {"unlisted/a.zip", 0644}, {"unlisted", 0111},
        {"closed", 0}, {"open", 0755},           {"open/a.zip", 0}};
    for (const auto& [path, mode] : permissions) {
        ASSERT_EQ(::chmod((directory / path).c_str(), mode), 0);
    }
    for (const std::string path : {"unlisted", "closed/a.zip", "open/a.zip", "open"}) {
        EXPECT_THAT(asOrdinaryUser([&] { return refusal(directory / path); }),
                    testing::MatchesRegex(directory / path + "(/a.zip)?: Permission denied"));
    }
    EXPECT_THAT(asOrdinaryUser([&] { return refusal(directory / "unlisted/a.zip"); }),
                HasSubstr("installed {"));
    ::chmod((directory / "closed").c_str(), 0755);
    ::chmod((directory / "unlisted").c_str(), 0755);
}

TEST(BundleContainer, IsMadeAndDeletedByItsCaller)
{
    const Directory directory;
    writeFile(directory / "made.zip", bundleZip("made"));
    const std::unique_ptr<BundleContainer> container(
        BundleContainer::createBundleContainer(utf16(directory / "made.zip")));
    EXPECT_FALSE(container->getBundles().empty());
    EXPECT_THROW(BundleContainer::createBundleContainer(utf16(directory / "missing.zip")),
                 std::runtime_error);
}

TEST(BundleContainer, IsMadeByManyThreadsAtOnce)
{
    const Directory directory;
    for (const std::string name : {"t1", "t2", "t3"}) {
        writeFile(directory / name + ".zip", bundleZip(name));
    }
    std::vector<std::vector<Bundle>> results(8);
    {
        std::vector<std::jthread> threads;
        for (std::vector<Bundle>& result : results) {
            threads.emplace_back([&] { result = install(directory / ""); });
        }
    }
    for (const std::vector<Bundle>& result : results) {
        EXPECT_THAT(namesOf(result), ElementsAre("t1", "t2", "t3"));
        EXPECT_EQ(result, results.front());
    }
}

TEST(Bundle, SaysThatItIsInvalid)
{
    const Bundle invalid;
    EXPECT_FALSE(invalid);
    EXPECT_EQ(invalid, Bundle());
    EXPECT_FALSE(invalid < Bundle());
    EXPECT_THROW(invalid.GetBundleId(), std::invalid_argument);
    EXPECT_THROW(invalid.GetSymbolicName(), std::invalid_argument);
    EXPECT_THROW(invalid.GetLocation(), std::invalid_argument);
}

} // namespace

/// Takes the place of pread(), which a header may define already. Gives only a part. While a read
/// is to fail, every other one before it is interrupted.
extern "C" [[gnu::visibility("default")]] ssize_t readPart(int file, void* bytes, std::size_t size,
                                                           off_t offset) asm("pread");
ssize_t readPart(int file, void* bytes, std::size_t size, off_t offset)
{
    EXPECT_NE(::fcntl(file, F_GETFD) & FD_CLOEXEC, 0) << "programs that are started get the file";
    static bool isInterrupted = false;
    if (readsUntilError >= 0) {
        isInterrupted = !isInterrupted;
        errno = readsUntilError == 0 ? EIO : EINTR;
        if (readsUntilError == 0 || isInterrupted) {
            return -1;
        }
        --readsUntilError;
    }
    return ::syscall(SYS_pread64, file, bytes, std::min<std::size_t>(size, 1000), offset);
}

} // namespace tarn::tests
