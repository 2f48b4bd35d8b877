#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QList>

#include <algorithm>

// Complete documents of every record, written down by hand as the service sends them, one member at a
// time so that a test can leave one out, replace it or move it. (Texts with // or # are no raw literals: moc
// takes them for a comment or a directive and loses track of the namespace.)
namespace orbitledge::testing {

enum class JsonType { String, Number, Boolean, Array, Object };

struct Member {
    QByteArray key;
    /// The value as it stands in the document.
    QByteArray value;
    JsonType type = JsonType::String;
    bool required = true;
};

using Members = QList<Member>;

inline QByteArray object(const Members &members)
{
    QByteArrayList parts;
    for (const Member &member : members)
        parts.append('"' + member.key + "\":" + member.value);
    return '{' + parts.join(',') + '}';
}

inline Members without(Members members, const QByteArray &key)
{
    members.removeIf([&key](const Member &member) { return member.key == key; });
    return members;
}

inline Members with(Members members, const QByteArray &key, const QByteArray &value)
{
    const auto found = std::ranges::find(members, key, &Member::key);
    if (found == members.end())
        members.append({.key = key, .value = value});
    else
        found->value = value;
    return members;
}

inline Members requiredOnly(Members members)
{
    members.removeIf([](const Member &member) { return !member.required; });
    return members;
}

inline Members subscriptionMembers()
{
    constexpr bool required = true;
    constexpr bool optional = false;
    return {
        {"id", R"("6D3A1C6E-29F4-4E0B-9F3D-0C8B8A6A1E01")", JsonType::String, required},
        {"user_id", R"("B2F0E8B4-5D8E-4C6F-8A54-7B1C9D2E3F02")", JsonType::String, required},
        {"name", R"("Streaming")", JsonType::String, required},
        {"cost", "9.99", JsonType::Number, required},
        {"currency", R"("EUR")", JsonType::String, required},
        {"converted_cost", "10.84", JsonType::Number, optional},
        {"converted_currency", R"("USD")", JsonType::String, optional},
        {"billing_cycle", R"("monthly")", JsonType::String, required},
        {"next_billing_date", R"("2026-03-05")", JsonType::String, required},
        {"category", R"("00000000-0000-4000-8000-00000000CA7E")", JsonType::String, optional},
        {"category_name", R"("Entertainment")", JsonType::String, optional},
        {"status", R"("active")", JsonType::String, required},
        {"template_id", R"("FFFFFFFF-FFFF-4FFF-BFFF-FFFFFFFFFFFF")", JsonType::String, optional},
        {"logo_url", "\"https://cdn.example.com/logos/streaming.png\"", JsonType::String, optional},
        {"cancelled_at", R"("2026-02-01T10:11:12Z")", JsonType::String, optional},
        {"cancellation_date", R"("2026-04-05")", JsonType::String, optional},
        {"trial_end_date", R"("2026-01-15")", JsonType::String, optional},
        {"trial_notification_days", "3", JsonType::Number, optional},
        {"trial_notification_sent", "true", JsonType::Boolean, optional},
        {"created_at", R"("2025-12-31T23:59:59Z")", JsonType::String, required},
        {"updated_at", R"("2026-02-01T10:11:13Z")", JsonType::String, required},
    };
}

inline Members userProfileMembers()
{
    constexpr bool required = true;
    constexpr bool optional = false;
    return {
        {"id", R"("B2F0E8B4-5D8E-4C6F-8A54-7B1C9D2E3F02")", JsonType::String, required},
        {"email", R"("ada@example.com")", JsonType::String, required},
        {"first_name", R"("Ada")", JsonType::String, required},
        {"last_name", R"("Lovelace")", JsonType::String, required},
        {"is_verified", "true", JsonType::Boolean, required},
        {"plan_type", R"("premium")", JsonType::String, required},
        {"stripe_subscription_status", R"("trialing")", JsonType::String, optional},
        {"plan_expires_at", R"("2027-01-01T00:00:00Z")", JsonType::String, optional},
        {"plan_cancelled_at", R"("2026-02-02T02:02:02Z")", JsonType::String, optional},
        {"trial_start_date", R"("2026-01-01T00:00:01Z")", JsonType::String, optional},
        {"trial_end_date", R"("2026-01-15T00:00:02Z")", JsonType::String, optional},
        {"cancel_at_trial_end", "false", JsonType::Boolean, required},
        {"onboarding_status", R"("completed")", JsonType::String, required},
        {"default_currency", R"("EUR")", JsonType::String, required},
        {"monthly_budget", "150.5", JsonType::Number, optional},
        {"created_at", R"("2025-06-07T08:09:10Z")", JsonType::String, required},
        {"updated_at", R"("2026-02-03T04:05:06Z")", JsonType::String, required},
    };
}

inline Members subscriptionTemplateMembers()
{
    constexpr bool required = true;
    constexpr bool optional = false;
    return {
        {"id", R"("0C8B8A6A-1E01-4E0B-9F3D-6D3A1C6E29F4")", JsonType::String, required},
        {"name", R"("Music")", JsonType::String, required},
        {"company_name", R"("Music Ltd.")", JsonType::String, optional},
        {"logo_url", "\"https://cdn.example.com/logos/music.png\"", JsonType::String, optional},
        {"icon", R"("music.note")", JsonType::String, optional},
        {"color_scheme", "\"#1DB954\"", JsonType::String, optional},
        {"website_url", "\"https://music.example.com/\"", JsonType::String, optional},
        {"description", R"("Music without end")", JsonType::String, optional},
        {"category", R"("Entertainment")", JsonType::String, optional},
        {"typical_monthly_cost", "10.99", JsonType::Number, optional},
        {"typical_annual_cost", "109.9", JsonType::Number, optional},
        {"annual_discount_percentage", "16.7", JsonType::Number, optional},
        {"has_free_tier", "false", JsonType::Boolean, optional},
        {"available_billing_cycles", R"(["monthly","yearly"])", JsonType::Array, optional},
        {"created_at", R"("2024-02-29T12:00:00Z")", JsonType::String, required},
        {"updated_at", R"("2025-03-01T13:14:15Z")", JsonType::String, required},
        {"usage_count", "1234", JsonType::Number, optional},
    };
}

inline Members createRequestMembers()
{
    constexpr bool required = true;
    constexpr bool optional = false;
    return {
        {"name", R"("Streaming")", JsonType::String, required},
        {"cost", "9.99", JsonType::Number, required},
        {"currency", R"("EUR")", JsonType::String, optional},
        {"billing_cycle", R"("monthly")", JsonType::String, required},
        {"next_billing_date", R"("2026-03-05")", JsonType::String, optional},
        {"category_id", R"("00000000-0000-4000-8000-00000000CA7E")", JsonType::String, optional},
        {"trial_end_date", R"("2026-01-15")", JsonType::String, optional},
        {"trial_notification_days", "3", JsonType::Number, optional},
    };
}

inline Members mutationResponseMembers()
{
    return {
        {"message", R"("Subscription cancelled")", JsonType::String, true},
        {"subscription", object(subscriptionMembers()), JsonType::Object, true},
    };
}

inline Members authenticationResponseMembers()
{
    return {{"user", object(userProfileMembers()), JsonType::Object, true}};
}

} // namespace orbitledge::testing
