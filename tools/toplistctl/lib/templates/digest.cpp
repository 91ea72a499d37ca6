#include "toplistctl/lib/templates/digest.h"

#include "toplist/definitions.h"
#include "util/fields.h"
#include "util/sha1.h"

namespace toplist::ctl {

std::string check_value_of(std::string_view text) {
  Sha1Context context{};
  sha1_init(context);
  sha1_update(context, reinterpret_cast<const unsigned char*>(text.data()), text.size());
  sha1_final(context);
  return sha1_digest_text(context.digest, DigestText::hexadecimal);
}

std::optional<std::string> with_check_value(std::string_view text, std::string_view template_name,
                                            std::string_view check_value) {
  std::string result;
  std::size_t copied = 0;
  bool found = false;
  FieldReader fields(text);
  DefinitionRecord record;
  while (next_record(fields, record) > kCheckValueField) {
    const std::string_view old_value = record[kCheckValueField];
    if (record[kTemplateField] != template_name) continue;
    const auto at = static_cast<std::size_t>(old_value.data() - text.data());
    result.append(text.substr(copied, at - copied)).append(check_value);
    copied = at + old_value.size();
    found = true;
  }
  if (!found) return std::nullopt;
  return result.append(text.substr(copied));
}

}  // namespace toplist::ctl
