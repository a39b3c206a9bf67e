#include "reference_host/log/Redaction.h"

#include <gtest/gtest.h>

TEST(Redaction, LeavesOutQueriesAndTokensOnly) {
  const struct {
    const wchar_t* text;
    const wchar_t* shown;
  } rows[] = {
      {L"new URL (https://h:1/a.cab?expires=1&signature=ff) for file (a.cab)",
       L"new URL (https://h:1/a.cab?[left out]) for file (a.cab)"},
      {LR"({"downloadUrl":"HTTP://h/a?s=1","name":"a"},{"downloadUrl":"http://h/b?s=2"})",
       LR"({"downloadUrl":"HTTP://h/a?[left out]","name":"a"},{"downloadUrl":"http://h/b?[left out]"})"},
      {LR"("https:\/\/h\/a?s=1\u0026signature=ff","x")", LR"("https:\/\/h\/a?[left out]","x")"},
      {L"x (https://h/a?n='(1)'&signature=ff) y", L"x (https://h/a?[left out]) y"},
      {L"x (https://h/a(1).cab?signature=ff), y", L"x (https://h/a(1).cab?[left out] y"},
      {L"x 'https://h/it's?signature=f'f' y", L"x 'https://h/it's?[left out]' y"},
      {L"https://h/a?b=('&signature=ff)", L"https://h/a?[left out]"},
      {L"(https://h/a.cab)eyJhbGciOi.eyJzdWIi.c2ln", L"(https://h/a.cab)[left out]"},
      {L"https://h/a.cab", L"https://h/a.cab"},
      {L"https://h/a?x", L"https://h/a?[left out]"},
      {L"why? http: is it", L"why? http: is it"},
      {LR"({"jwt":"eyJhbGciOi.eyJzdWIi.c2ln-_"})", LR"({"jwt":"[left out]"})"},
      {L"token: eyJhbGciOi.eyJzdWIi.", L"token: [left out]"},
      {L"keyJ.x and eyJustAWord", L"keyJ.x and eyJustAWord"},
      {L"eyJ", L"eyJ"},
      {L"", L""},
  };
  for (const auto& row : rows) EXPECT_EQ(refhost::WithoutSecrets(row.text), row.shown);
}
