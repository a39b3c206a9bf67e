#!/usr/bin/env bash
# Who includes whom is what docs/architecture.md's tables of folders say, both ways: an include that no row allows fails,
# and so does an arrow that no include uses. A source of the reference host includes the header that it implements first.
# With --dot: the rooms of the reference host and their arrows, for graphviz.
source scripts/common.sh
git ls-files -co --exclude-standard '*.cpp' '*.h' | perl -e '
  my (%row, %used, @wrong);
  open my $table, "<", "docs/architecture.md" or die;
  for (grep { /^\| `[^`]+\/`/ } <$table>) {
    my (undef, $folders, undef, $may) = split /\s*\|\s*/;
    for my $from ($folders =~ /`([^`]+)`/g) {
      $row{$from} = {all => $may eq "everything", may => [map { -e "reference_host/$_" && $from =~ /^reference_host/ ? "reference_host/$_" : $_ } $may =~ /`([^`]+)`/g]};
    }
  }
  my $of = sub { my ($path) = @_; (sort { length $b <=> length $a } grep { index($path, $_) == 0 } keys %row)[0] // "" };
  while (my $file = <STDIN>) {
    chomp $file;
    next unless -f $file;
    my $from = $of->($file) or push(@wrong, "$file: its folder has no row") and next;
    open my $in, "<", $file or die;
    my @includes = map { /^#include "([^"]+\/[^"]+)"/ ? $1 : () } <$in>;
    my ($stem) = $file =~ /^reference_host\/.*?(\w+)\.cpp$/;
    push @wrong, "$file: does not begin with its header" if $stem && ($includes[0] // "") !~ /\/$stem\.h$/;
    for my $to (@includes) {
      next if $row{$from}{all} || $of->($to) eq $from;
      my ($arrow) = grep { index($to, $_) == 0 && ($of->($to) eq $of->($_) || -f $_) } @{$row{$from}{may}};
      defined $arrow ? $used{"$from $arrow"}++ : push @wrong, "$file: may not include $to";
    }
  }
  for my $from (sort keys %row) { for (@{$row{$from}{may}}) { push @wrong, "$from: nobody there includes $_" unless $used{"$from $_"} } }
  if (@ARGV && $ARGV[0] eq "--dot") {
    my @arrows = map { /^reference_host\/(\w+)\/ reference_host\/(\w+)/ ? "  $1 -> $2;\n" : () } sort keys %used;
    print "digraph rooms {\n  node [shape=box, style=\"rounded,filled\", fillcolor=\"#f4f4f4\", fontname=\"Helvetica\", fontsize=11];\n",
      "  bgcolor=\"white\"; edge [color=\"#555555\"];\n", @arrows, "}\n";
    exit;
  }
  print "$_\n" for @wrong;
  print scalar(keys %used), " arrows\n";
  exit(@wrong ? 1 : 0)' -- "$@"
