#include "demo/LoginPage.h"

#include "demo/SampleData.h"

using namespace Qt::StringLiterals;

namespace orbitledge::demo {

Response loginPage(const Viewer &viewer, const LoginForm &form, int status)
{
    const bool failed = !form.problem.isEmpty();
    Html fields = formTokenField(viewer)
        + voidElement("input"_L1,
            {{"type"_L1, u"hidden"_s}, {"name"_L1, u"next"_s}, {"value"_L1, QString::fromUtf8(form.next)}});
    fields += element("p"_L1, {{"class"_L1, u"field"_s}},
        element("label"_L1, {{"for"_L1, u"email"_s}}, u"E-mail"_s)
            + voidElement("input"_L1,
                {{"id"_L1, u"email"_s}, {"name"_L1, u"email"_s}, {"type"_L1, u"email"_s},
                    {"autocomplete"_L1, u"username"_s}, {"value"_L1, form.email}, flag("required"_L1),
                    flag("autofocus"_L1, !failed), {"aria-describedby"_L1, u"problem"_s, failed}}));
    fields += element("p"_L1, {{"class"_L1, u"field"_s}},
        element("label"_L1, {{"for"_L1, u"password"_s}}, u"Password"_s)
            + voidElement("input"_L1,
                {{"id"_L1, u"password"_s}, {"name"_L1, u"password"_s}, {"type"_L1, u"password"_s},
                    {"autocomplete"_L1, u"current-password"_s}, flag("required"_L1),
                    flag("autofocus"_L1, failed), {"aria-describedby"_L1, u"problem"_s, failed}}));
    if (failed)
        fields += element("p"_L1,
            {{"class"_L1, u"problem"_s}, {"id"_L1, u"problem"_s}, {"role"_L1, u"alert"_s}}, form.problem);
    fields += element("button"_L1, {{"class"_L1, u"button wide"_s}, {"id"_L1, u"sign-in"_s}}, u"Sign in"_s);

    Html content = element("h1"_L1, {}, u"Sign in"_s)
        + element("p"_L1, {{"class"_L1, u"soft"_s}}, u"See what’s about to charge."_s);
    if (!form.notice.isEmpty())
        content += element("p"_L1, {{"class"_L1, u"notice"_s}, {"role"_L1, u"status"_s}}, form.notice);
    content += element("form"_L1, {{"method"_L1, u"post"_s}, {"action"_L1, u"/login"_s}}, fields);
    content += element("p"_L1, {{"class"_L1, u"hint"_s}},
        Html(u"The sample account is "_s) + element("code"_L1, {}, QString(sampleEmail))
            + u" with the password "_s + element("code"_L1, {}, QString(samplePassword)) + u"."_s);
    return page(
        u"Sign in"_s, viewer, element("section"_L1, {{"class"_L1, u"card narrow login"_s}}, content), status);
}

} // namespace orbitledge::demo
