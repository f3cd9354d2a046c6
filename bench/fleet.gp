# What a fleet takes of Prometheus, from fleet.dat in the working directory: servers, MB, MB at most, cores, s, ms.
set terminal svg size 1200,420 font "sans,13" background "#ffffff"
set datafile missing "nan"
set output "fleet-growth.svg"
set multiplot layout 1,3
set logscale xy
set format x "10^{%L}"
set xlabel "servers of 24 drives"
set grid
set key left top
set key samplen 2
set xrange [80:12500]
set title "Memory of Prometheus: MB"
set yrange [50:20000]
plot "fleet.dat" using 1:2 with linespoints lw 2 title "resident", \
     "fleet.dat" using 1:3 with linespoints lw 2 title "at most"
set title "Cores"
set yrange [0.001:5]
plot "fleet.dat" using 1:4 with linespoints lw 2 title "of 2, scraped every minute"
set title "Time"
set yrange [0.0005:2000]
plot "fleet.dat" using 1:5 with linespoints lw 2 title "all rules, s a minute", \
     "fleet.dat" using 1:($6/1000) with linespoints lw 2 title "a scrape, s"
unset multiplot
