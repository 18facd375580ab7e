#!/bin/sh
# Makes the files of this folder, byte for byte: their texts stand here in UTF-8. Some rows of the
# tables are bad on purpose. Usage: examples/data/make.sh
set -eu
cd "$(dirname "$0")"

encode() { iconv -f UTF-8 -t "$1"; }

cat >letter-65001.txt <<'END'
The harbour office, Monday morning

Dear Zoë,

thank you for the harbour plan. The crane at the north quay is seperate from the crane
at the south quay, and each crane needs its own permit. The permit for the north quay
arrived on Friday; the permit for the south quay is still at the ministry. I beleive
that the ministry will answer this week. If the ministry does not answer, we unload
both ships at the north quay, one after the other, and keep the separate crane free.

The café at the north quay doesn't open before nine – bring coffee. The naïve plan was
to unload both ships before breakfast; the harbour pilot laughed. We believe the pilot.

The two ships carry different cargo: one carries timber, the other carries diferent
kinds of paper. Please keep the paper dry, and keep timber and paper in separate sheds.
I believe that the pilot's brother owns the drier shed.

Yours,
René
END

encode CP1252 >markt-1252.txt <<'END'
Der Markt am Fluß

Am Samstag öffnet der Markt früh. Für fünf Äpfel zahlt man zwei €, für zehn Äpfel drei €.
Die Bäckerin verkauft Brötchen, süße Hörnchen und schwarzes Brot; die Brötchen sind früh
ausverkauft. Wer spät kommt, findet noch Brot und müde Verkäufer.

Am Fluß sitzen die Angler. Sie grüßen die Bäckerin, die Bäckerin grüßt zurück.
„Schöne Äpfel“, sagt der älteste Angler, „aber für Äpfel beißt kein Fisch.“
END

encode CP932 >eki-932.txt <<'END'
駅のポスト

駅の前に、赤いポストがある。駅の前に、小さな店もある。
朝、手紙を入れる。夜、手紙を待つ。
「返事は？」「まだです。」
雨の日、ポストは駅より静かだ。
END

# Delimited by |, a byte that also ends the character ポ in this code page.
{
    cat <<'END'
id|name|city|orders|active|note
1001|北浜商店|大阪|1250|yes|
1002|ポート珈琲|神戸|84|on|週二回
1003|佐々木文具店|神戸|310|no|休業中
1004|佐々木文具|神戸|12|yes|
1005|ソラ表具|京都|7
1006|みなと食堂|横浜|455|yes|早朝|要電話
1007|ﾔﾏﾀﾞ電器|大阪|96|yes|電話	受付	九時
END
} | encode CP932 >customers-932.txt
printf '1008|\223\214\213\236\377|\223\214\213\236|33|yes|\n' >>customers-932.txt

{
    cat <<'END'
id;name;city;orders;active;note
2001;Müller & Söhne;Köln;910;yes;€ only
2002;Müler & Söhne;Köln;3;no;
2003;Bäckerei Groß;Lübeck;1204;yes;vor 6 Uhr
2004;Café Zoë;Zürich;77;true;
2005;Fischhaus
2006;Großmarkt Süd;München;2650;1;Tor	B	links
END
} | encode CP1252 >customers-1252.csv
printf '2007;Caf\351 \311toile;Gen\350ve;15;yes;\n' >>customers-1252.csv

{
    printf '\357\273\277'
    cat <<'END'
id,name,city,orders,active,note
3001,Padaria São João,Lisboa,640,yes,
3002,Παπαδόπουλος,Θεσσαλονίκη,58,no,closed in August
3003,Kavárna U Řeky,Brno,221,yes,
3004,Harbour Café,Cork,1810,on,round the clock
3005,Harbor Café,Cork,2,off,

3006,Чайная,София,35,yes,две чашки
END
    printf '3007,Truncated \343\201,Nowhere,1,yes,\n'
    printf '3008,Nul \000 inside,Nowhere,1,yes,\n'
    printf '3009,Last Caf\303\251,Galway,5,yes,no line end'
} >customers-65001.csv

# Bytes without any meaning, always the same ones.
LC_ALL=C awk 'BEGIN { x = 1; for (i = 0; i < 2000; ++i) { x = (x * 1103 + 12345) % 65536
    printf "%c", int(x / 256) } }' >noise.bin
