# Most polls in a second, of each ten minutes, one panel for each policy: gnuplot -e "data='…'; picture='…'" polls.gp
# The panels share both axes, so that they compare at a glance; the counts' axis is logarithmic.
stats data using 1 skip 1 nooutput
policies = STATS_blocks - 1
hours = STATS_records / policies / 6.0
set terminal svg size 900, 110 * policies + 40 dynamic font "sans-serif,12" background "#ffffff"
set output picture
set multiplot layout policies, 1 margins 0.09, 0.97, 0.09, 0.94 spacing 0.07
set logscale y
set yrange [0.8:300]
set ytics (1, 10, 100) font ",10"
set border 3 linecolor "#333333"
set tics nomirror scale 0 textcolor "#333333"
set grid ytics linetype 1 linecolor "#dddddd"
set style fill solid noborder
set boxwidth 1.0 / 6
set xrange [0:hours]
set xtics 6 font ",10" format ""
do for [i = 0:policies - 1] {
  if (i == policies - 1) { set xtics 6 format "%g h" font ",10" }
  set title system(sprintf("grep '^\"' '%s' | sed -n %dp | tr -d '\"'", data, i + 1)) noenhanced offset 0,-0.7 font ",11"
  plot data index i using ($0 / 6):1 skip 1 with boxes linecolor "#336699" notitle
}
unset multiplot
