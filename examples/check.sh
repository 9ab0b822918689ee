#!/usr/bin/env bash
# Runs each example of the table, "status: command: a pattern of its output". check.sh PROGRAMS
set -euo pipefail
golden=../tests/golden
while IFS=: read -r status command pattern; do
  found=0
  # shellcheck disable=SC2086
  output=$("$1/"$command 2>&1 </dev/null) || found=$?
  if [ "$found" != "$status" ] || ! grep -qzE "$pattern" <<<"$output"; then
    printf '%s\nstatus %s, expected %s and %s:\n%s\n' "$command" "$found" "$status" "$pattern" "$output"
    exit 1
  fi
done <<EOF_TABLE
0:client answer.xml:^welcome, mara.lindqvist
1:client $golden/expired.xml:^rejected. no assertion's time window
1:client $golden/no-conditions.xml:^rejected. no assertion has conditions
1:client $golden/denied.xml:^not signed in
1:client client.cpp:rejected. the text is not XML
0:read_stored answer.xml:^mara.lindqvist, until 2096-02-14T20.15.01Z.*HouseholdID. hh-7731920
1:read_stored $golden/denied.xml:^sign in again. nobody is signed in
0:ask_attributes answer.xml:AttributeQuery.*t-58f20c7be1.*HouseholdID.*Language.*>sv<
1:ask_attributes $golden/denied.xml:^the response names nobody
0:may_they_watch answer.xml answer.xml:AuthzDecisionQuery.*/ch/1.*t-58f20c7be1.*Play.*no decision
0:may_they_watch answer.xml $golden/standard.xml:Permit
0:sign_out answer.xml:LogoutRequest.*t-58f20c7be1.*s-20260115-0042
1:sign_in provider.xml:^open https.//idp.lakeside-cable.example/in.SAMLRequest=.*not signed in
EOF_TABLE
