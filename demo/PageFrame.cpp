#include "demo/PageFrame.h"

#include "timeline/BrandColor.h"

#include <QDate>
#include <QFile>
#include <QLocale>

#include <stdexcept>

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

namespace {

constexpr auto mark
    = "<svg class=\"mark\" viewBox=\"0 0 24 24\" aria-hidden=\"true\"><circle cx=\"8\" cy=\"8\" r=\"3.2\"/>"
      "<circle cx=\"16\" cy=\"8\" r=\"3.2\"/><circle cx=\"8\" cy=\"16\" r=\"3.2\"/>"
      "<circle cx=\"16\" cy=\"16\" r=\"3.2\"/></svg>"_L1;

QByteArray resource(const QString &name)
{
    QFile file(u":/demo/data/"_s + name);
    if (!file.open(QIODevice::ReadOnly))
        throw std::logic_error("a file is not compiled in");
    return file.readAll();
}

Html navigation(const Viewer &viewer)
{
    Html links = element("a"_L1, {{"href"_L1, u"/"_s}, {"class"_L1, u"brand"_s}},
        Html::literal(mark) + element("span"_L1, {}, u"Orbitledge"_s));
    if (viewer.profile) {
        links += element("a"_L1, {{"href"_L1, u"/calendar"_s}}, u"Calendar"_s);
        links += element("form"_L1, {{"method"_L1, u"post"_s}, {"action"_L1, u"/logout"_s}},
            formTokenField(viewer) + element("button"_L1, {{"class"_L1, u"quiet"_s}}, u"Sign out"_s));
    } else {
        links += element("a"_L1, {{"href"_L1, u"/login"_s}, {"class"_L1, u"right"_s}}, u"Sign in"_s);
    }
    return element("header"_L1, {}, element("nav"_L1, {{"aria-label"_L1, u"Main"_s}}, links));
}

QDate toolkitDate(const LocalDate &date)
{
    return {static_cast<int>(date.year), static_cast<int>(date.month), static_cast<int>(date.day)};
}

QString initials(const QString &name)
{
    QString result;
    const QStringList words = name.split(u' ', Qt::SkipEmptyParts);
    for (const QString &word : words.mid(0, 2)) {
        const qsizetype length = word.at(0).isHighSurrogate() && word.size() > 1 ? 2 : 1;
        result += word.first(length).toUpper();
    }
    return result;
}

} // namespace

Response page(const QString &title, const Viewer &viewer, const Html &content, int status)
{
    const Html head = voidElement("meta"_L1, {{"charset"_L1, u"utf-8"_s}})
        + voidElement(
            "meta"_L1, {{"name"_L1, u"viewport"_s}, {"content"_L1, u"width=device-width, initial-scale=1"_s}})
        + voidElement("meta"_L1, {{"name"_L1, u"color-scheme"_s}, {"content"_L1, u"light dark"_s}})
        + element("title"_L1, {}, title + u" · Orbitledge"_s)
        + voidElement("link"_L1, {{"rel"_L1, u"icon"_s}, {"href"_L1, u"/icon.svg"_s}})
        + voidElement("link"_L1, {{"rel"_L1, u"stylesheet"_s}, {"href"_L1, u"/style.css"_s}});
    const Html body
        = element("a"_L1, {{"class"_L1, u"skip"_s}, {"href"_L1, u"#content"_s}}, u"Skip to the content"_s)
        + navigation(viewer) + element("main"_L1, {{"id"_L1, u"content"_s}}, content)
        + element("footer"_L1, {},
            u"This is the local demo service. What you enter here stays on this computer."_s);
    const Html document = element(
        "html"_L1, {{"lang"_L1, u"en"_s}}, element("head"_L1, {}, head) + element("body"_L1, {}, body));

    Response response;
    response.status = status;
    response.body = "<!doctype html>\n" + document.markup().toUtf8() + '\n';
    response.with("Content-Type", "text/html; charset=utf-8")
        .with("Content-Security-Policy",
            "default-src 'none'; style-src 'self'; img-src 'self'; form-action 'self'; base-uri 'none'; "
            "frame-ancestors 'none'")
        .with("X-Frame-Options", "DENY");
    return response;
}

Html formTokenField(const Viewer &viewer)
{
    return voidElement("input"_L1,
        {{"type"_L1, u"hidden"_s}, {"name"_L1, u"form_token"_s},
            {"value"_L1, QString::fromLatin1(viewer.formToken)}});
}

Response errorPage(const Viewer &viewer, int status, const ErrorBody &body)
{
    const bool isMissing = status == 404;
    const QString heading = isMissing ? u"Nothing here"_s : body.error;
    const Html content = element("section"_L1, {{"class"_L1, u"card narrow center"_s}},
        element("p"_L1, {{"class"_L1, u"eyebrow"_s}}, u"Error %1"_s.arg(status))
            + element("h1"_L1, {}, heading)
            + element("p"_L1, {}, isMissing ? body.error + u' ' + body.message : body.message)
            + element("p"_L1, {},
                element("a"_L1, {{"class"_L1, u"button"_s}, {"href"_L1, u"/"_s}}, u"To the start page"_s)));
    return page(heading, viewer, content, status);
}

Response styleSheet()
{
    static const QByteArray content = resource(u"style.css"_s);
    Response response;
    response.body = content;
    response.with("Content-Type", "text/css; charset=utf-8").with("Cache-Control", "private, max-age=60");
    return response;
}

Response icon()
{
    static const QByteArray content = resource(u"icon.svg"_s);
    Response response;
    response.body = content;
    response.with("Content-Type", "image/svg+xml").with("Cache-Control", "private, max-age=3600");
    return response;
}

QString tintClass(const QString &name)
{
    return u"tint-"_s + QString::number(brandIndex(name));
}

Html logo(const QString &name)
{
    return element("span"_L1, {{"class"_L1, u"logo "_s + tintClass(name)}, {"aria-hidden"_L1, u"true"_s}},
        initials(name));
}

QString dayText(const LocalDate &date)
{
    return QLocale::c().toString(toolkitDate(date), u"dddd, d MMMM"_s);
}

QString monthText(const LocalDate &date)
{
    return QLocale::c().toString(toolkitDate(date), u"MMMM yyyy"_s);
}

} // namespace orbitledge::demo
