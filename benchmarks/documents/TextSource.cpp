#include "benchmarks/documents/TextSource.hpp"

namespace benchmarks {

const Vocabulary ENGLISH{
    {u"the",      u"of",        u"and",      u"a",        u"in",       u"that",      u"it",
     u"was",      u"river",     u"harbour",  u"morning",  u"they",     u"carried",   u"lantern",
     u"against",  u"weather",   u"towards",  u"mountain", u"with",     u"remember",  u"until",
     u"letters",  u"on",        u"garden",   u"between",  u"narrow",   u"streets",   u"for",
     u"evening",  u"as",        u"somebody", u"answered", u"quietly",  u"machinery", u"engine",
     u"to",       u"after",     u"which",    u"under",    u"children", u"had",       u"waiting",
     u"nothing",  u"everybody", u"she",      u"he",       u"brought",  u"paper",     u"winter",
     u"question", u"doctor's",  u"measured", u"window,",  u"bread,",   u"journey,",  u"seven"}};

const std::vector<Vocabulary> SCRIPTS{
    {{u"清晨", u"河水", u"慢慢", u"流过",   u"城市", u"的",   u"老人", u"坐在", u"门口", u"读书",
      u"远处", u"传来", u"钟声", u"孩子们", u"学校", u"我们", u"今天", u"已经", u"知道", u"春天"},
     u"",
     u"。"},
    {{u"朝の", u"光が", u"静かに", u"窓から", u"差し込む", u"カーテン", u"の", u"向こうで", u"鳥が",
      u"鳴いて", u"いました", u"コーヒー", u"を", u"飲みながら", u"手紙を", u"読む"},
     u"",
     u"。"},
    {{u"утром", u"река", u"медленно", u"текла", u"через", u"город", u"и", u"старик", u"сидел", u"у",
      u"двери", u"читая", u"газету", u"вдалеке", u"слышался", u"колокол", u"дети"}},
    {{u"في", u"الصباح", u"كان", u"النهر", u"يجري", u"ببطء", u"عبر", u"المدينة", u"وجلس", u"الرجل",
      u"عند", u"الباب", u"يقرأ", u"كتابا", u"قديما", u"والأطفال", u"يلعبون"}},
    {{u"déjà",   u"élève",     u"où",     u"naïve", u"garçon", u"łódź",   u"źródło",
      u"święto", u"größe",     u"straße", u"über",  u"niño",   u"mañana", u"corazón",
      u"příliš", u"žluťoučký", u"kůň",    u"đường", u"người",  u"tiếng",  u"le",
      u"la",     u"und",       u"que",    u"không"}},
    {{u"thanks", u"😀", u"so", u"much", u"👍🏽", u"see", u"you", u"at", u"the", u"party", u"🎉🎊",
      u"tomorrow", u"🚀", u"great", u"news", u"❤️", u"👩‍👩‍👧", u"indeed", u"🌍"}}};

const Vocabulary SOURCE_TEXT{{u"if",
                              u"(a",
                              u"<",
                              u"b",
                              u"&&",
                              u"c",
                              u">",
                              u"d)",
                              u"print(\"x\");",
                              u"<p",
                              u"class='note'>",
                              u"it's",
                              u"</p>",
                              u"R&D",
                              u"\"quoted\"",
                              u"std::vector<int>",
                              u"x->y",
                              u"value",
                              u"return",
                              u"'a'",
                              u"<br/>",
                              u"&amp;",
                              u"count",
                              u"<<",
                              u">=",
                              u"\"\""},
                             u" ",
                             u"; "};

const Vocabulary CONTROLS{{u"the", u"log", u"\u001b[1m", u"carried", u"\u0007", u"pages", u"\u000c",
                           u"apart", u"and", u"columns", u"with", u"bold", u"\u001b[0m", u"words",
                           u"\u0008", u"left"}};

std::size_t TextSource::number(std::size_t least, std::size_t most)
{
    return least + random() % (most - least + 1);
}

std::u16string TextSource::words(std::size_t count)
{
    std::u16string text;
    for (std::size_t word = 0; word < count; ++word) {
        if (word > 0) {
            text += vocabulary.separator;
        }
        text += vocabulary.words[number(0, vocabulary.words.size() - 1)];
    }
    return text;
}

std::u16string TextSource::paragraph(std::size_t units)
{
    std::u16string text;
    while (text.size() < units) {
        text += words(number(5, 20));
        text += vocabulary.sentenceEnd;
    }
    text.resize(text.find_last_not_of(u' ') + 1);
    return text;
}

std::u16string numbered(std::u16string_view text, std::size_t number)
{
    const std::string digits = std::to_string(number);
    return std::u16string(text).append(digits.begin(), digits.end());
}

} // namespace benchmarks
