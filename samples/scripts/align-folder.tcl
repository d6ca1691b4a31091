# Aligns all volumes of a folder one after the other, with one line of quality for each.
#
#   orvel -b align-folder.tcl FOLDER PATTERN OUTPUT-FOLDER
#
# For example: orvel -b align-folder.tcl stacks '*.tif' aligned
if {[llength $argv] != 3} {
  puts stderr "usage: orvel -b align-folder.tcl FOLDER PATTERN OUTPUT-FOLDER"
  quit 2
}
lassign $argv folder pattern target
file mkdir $target

# The mean quality of all pairs of a stack, under its present transforms.
proc meanQuality {slices} {
  set sum 0.0
  for {set upper 1} {$upper < $slices} {incr upper} {
    align setEditableSlice upper
    align setSliceNumber $upper
    set sum [expr {$sum + [align getQuality]}]
  }
  return [format "%.4f" [expr {$sum / ($slices - 1)}]]
}

create ZxAlignSlices align
puts "file\tslices\tbefore\tafter"
set failed 0
foreach path [lsort -dictionary [glob -nocomplain -directory $folder $pattern]] {
  # What goes wrong with one file is told and does not keep the others from being aligned.
  if {[catch {
    set stack [load $path]
    align data connect $stack
    align fire
    if {![align isEditorOpen]} { align edit }
    set slices [align getNumSlices]
    set before [meanQuality $slices]
    align setSliceNumber [expr {$slices / 2}]
    align alignAll
    align resample
    [align result] save [file join $target [file tail $path]]
    puts "[file tail $path]\t$slices\t$before\t[meanQuality $slices]"
  } reason]} {
    puts stderr "[file tail $path]: $reason"
    incr failed
  }
  # Gives the memory back before the next file is read.
  foreach object [objects] { if {$object ne "align"} { remove $object } }
}
quit [expr {$failed > 0}]
