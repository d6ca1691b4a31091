# Sends every command of the module, and prints what it answers. Run by EveryCommandTest, which compares what is
# printed with every-command.txt.
proc > {args} {
  puts "> $args"
  if {[catch {uplevel #0 [list align {*}$args]} answer]} {
    puts "error: $answer"
  } elseif {$answer ne ""} {
    puts $answer
  }
}

puts "created [create ZxAlignSlices align]"
> getNumSlices
> getEditableSlice
> getQuality
> align
> getAlignMode
> setAlignMode 1
> setAlignMode 4
> setViewMode 1
> getLandmark 0 0
> snapshot none.png
> performance
> edit
> isEditorOpen
align data connect [load stack.nrrd]
align fire

> getNumSlices
> getSliceNumber
> getReferenceSlice
> edit
> isEditorOpen
> redrawInhibit 1
> redrawInhibit -1
> redrawInhibit
> setSliceNumber 1
> getSliceNumber
> setEditableSlice lower
> setEditableSlice sideways
> getEditableSlice
> setEditableSlice upper
> setReferenceSlice 0
> setReferenceSlice 99
> getReferenceSlice
> setFixReferenceSlice 1
> getFixReferenceSlice
> setFixReferenceSlice 0
> setTransformAll 0
> getTransformAll

> translate 2 -1.5
> rotate 0.25
> mirror
> getTransform 1
> undo
> getTransform 1
> redo
> undo
> setTransform 2 1 2 3.5 1
> getTransform 2
> setTransform 9 1 2 3.5 1
> setTransform 2 one 2 3.5 1
> save
> reset
> getTransform 1
> resetAll
> getTransform 2
> read
> getTransform 2
> resetAll

> getLandmarkCount
> setLandmark 1 0 5 6
> setLandmark 1 7 5 6
> getLandmark 1 0
> getLandmark 1 7
> addLandmark 3 4
> getLandmarkCount
> removeLandmark 2
> removeLandmark 0
> setLandmarks landmarks.csv
> setLandmarks nowhere.csv
> getLandmark 3 1

> setEditMode 3
> getEditMode
> getAlignMode
> setEditMode 1
> setAlignMode 0
> setAlignMode -1
> setAlignMode OptimizeAlignMethod
> getAlignMode
> setOption iterations 20
> getOption iterations
> setOption iterations few
> setRotationAllowed 0
> getRotationAllowed
> align
> alignAll
> getSliceNumber
> getTransform 0
> getTransform 3
> setSliceNumber 1
> getQuality

> setViewMode 0
> setViewMode -1
> viewZoomIn
> viewZoomOut
> showTransformToolBar 1
> showPairQuality 1
> showPairQuality 0
> setCheckerboardSize 12
> setCheckerboardSize 0
> showCoronalView 1
> showXZView 1
> showSagittalView 1
> showYZView 1
> orthoViewZoomIn
> orthoViewZoomOut
> setSagittalViewSliceNumber 5
> getSagittalViewSliceNumber
> setYZViewSliceNumber 24
> getYZViewSliceNumber
> setCoronalViewSliceNumber 7
> getCoronalViewSliceNumber
> setXZViewSliceNumber 8
> getXZViewSliceNumber
> setOrthoViewLineWidth 100
> setOrthoViewZWindow 1
> setOrthoViewZWindow -1
> setOrthoViewAutoUpdate 0
> updateOrthoViews
> snapshot editor.png
> snapshot nowhere/editor.png
puts "picture: [file exists editor.png]"

> setUseMaxIntProjection 1
> getUseMaxIntProjection
> setMaxIntProjectionRefThickness 0
> getMaxIntProjectionRefThickness
> setMaxIntProjectionSliceThickness 3
> getMaxIntProjectionSliceThickness
> setUseMaxIntProjection 0

> getOutputDims
> setOutputDims 20 20
> setOutputDims 30 20
> getOutputDims
> resampleToResult
> resample
> resampleToResult
> result
> getLabel
> close
> isEditorOpen
