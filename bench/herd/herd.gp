# Requests per second over time, one panel for each policy: gnuplot -e "data='…'; picture='…'" herd.gp
# The panels share both axes, so that they compare at a glance.
set datafile separator tab
stats data index 0 every ::0::0 using (headline = strcol(1), 1) nooutput
stats data index 0 every ::1::1 using (outage = $1, capacity = $2, minutes = $3, 1) nooutput
stats data using 1 nooutput
policies = STATS_blocks - 1

# Pixels: what is above the panels, a panel, and from one to the next.
width = 900; top = 84; panel = 72; step = 104; left = 76; right = 24; below = 52
height = top + policies * step - (step - panel) + below
up(y) = 1 - real(y) / height

set terminal svg size width, height dynamic font "sans-serif,12" background "#ffffff"
set output picture
set multiplot
set lmargin at screen real(left) / width
set rmargin at screen 1 - real(right) / width
set style fill solid noborder
set border 3 linecolor "#333333"
set tics nomirror scale 0 textcolor "#333333"
set grid ytics linetype 1 linecolor "#dddddd"
set xrange [0:minutes]
unset xtics
tick = (int(minutes) / 60 + 1) * 5
set yrange [0:3 * capacity]
grouped(n) = n < 1000 ? sprintf("%d", n) : sprintf("%d,%03d", n / 1000, int(n) % 1000)
set ytics (0, grouped(capacity) capacity, grouped(2 * capacity) 2 * capacity, grouped(3 * capacity) 3 * capacity) font ",10"

# The legend stands once, above the first panel.
set label 1 headline at screen real(left) / width, screen up(22) font "sans-serif:Bold,14"
set label 2 "requests above ".grouped(3 * capacity)." are cut off" at screen 1 - real(right) / width, screen up(54) right
set label 3 "requests per second" at screen 0.02, screen 0.5 center rotate
set key at screen real(left) / width, screen up(46) left reverse Left horizontal samplen 2 width 1

# Averages of ten seconds, each in the middle of them.
middle(second) = (floor(second / 10) + 0.5) / 6
do for [policy = 1:policies] {
  above = top + (policy - 1) * step
  set tmargin at screen up(above)
  set bmargin at screen up(above + panel)
  stats data index policy every ::0::0 using (name = strcol(1), outcome = strcol(2), 1) nooutput
  set label 4 name at graph 0, graph 1.13 font "sans-serif:Bold,12"
  set label 5 outcome at graph 1, graph 1.13 right
  set object 1 rectangle from 0, graph 0 to outage, graph 1 behind \
    fillcolor "#eeeeee" fillstyle solid noborder
  if (policy == policies) { set xlabel "minutes since the outage began"; set xtics tick nomirror scale 0 }
  plot data index policy every ::1 using (middle($0)):($1 / 10) smooth frequency \
      with filledcurves y1=0 linecolor "#e8a06a" title "answered 503", \
    "" index policy every ::1 using (middle($0)):($2 / 10) smooth frequency \
      with filledcurves y1=0 linecolor "#3b76b5" title "served", \
    capacity with lines linecolor "#333333" dashtype 2 title "capacity", \
    NaN with boxes linecolor "#eeeeee" title "outage"
  unset key
  unset label 1; unset label 2; unset label 3
}
